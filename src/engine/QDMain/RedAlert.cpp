#include "RedAlert.h"

#include <CodePage.h>
#include <Errors.h>
#include <Files.h>
#include <StringList.h>
#include <Utils.h>

#include <cstdint>
#include <cstdio>
#include <string>

namespace quarda {
namespace {

constexpr double kMillisecondsPerDay = 24.0 * 60 * 60 * 1000;
constexpr int64_t kMillisecondsPerMinute = 60 * 1000;

/// A date-time value with up to 15 significant digits and the decimal separator of the user.
std::string DateTimeToText(double value) {
  char buffer[40];
  const int size = std::snprintf(buffer, sizeof buffer, "%.15g", value);
  std::string text(buffer, static_cast<size_t>(size));
  const size_t point = text.find_first_not_of("0123456789+-e");
  if (point != std::string::npos) text[point] = platform::DecimalSeparator();
  return text;
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

/// Digits with at most one separator, and a minus before them. Written out here because the
/// standard library's readers follow the C locale, or bring tables along that cost more than the
/// scan.
double TextToDateTime(std::string_view text) {
  constexpr int kMostDigits = 18;  // all that count, and as many as fit
  const std::string_view number = Trim(text);
  const char separator = platform::DecimalSeparator();
  int64_t digits = 0;
  double scale = 1;
  int count = 0;
  bool behindPoint = false;
  bool valid = true;
  for (size_t i = number.starts_with('-') ? 1 : 0; i < number.size(); ++i) {
    if (number[i] == separator && !behindPoint) {
      behindPoint = true;
      continue;
    }
    valid = valid && IsDigit(number[i]) && (behindPoint || count < kMostDigits);
    if (!valid || count == kMostDigits) continue;
    digits = digits * 10 + (number[i] - '0');
    ++count;
    if (behindPoint) scale *= 10;
  }
  if (!valid || count == 0) {
    throw EConvertError("'" + std::string(text) + "' is not a valid floating point value");
  }
  const double value = static_cast<double>(digits) / scale;
  return number.starts_with('-') ? -value : value;
}

int64_t WholeMinutesBetween(double a, double b) {
  // Whole milliseconds first: a date-time value is not exact, and a minute must not be lost to
  // that.
  const double milliseconds = (a > b ? a - b : b - a) * kMillisecondsPerDay + 0.5;
  constexpr double kLargest = 9e15;  // beyond it, for ever
  return static_cast<int64_t>(milliseconds < kLargest ? milliseconds : kLargest) /
         kMillisecondsPerMinute;
}

/// Adds the time to the record. False when the `count`-th virus mail came within the span.
bool AddTime(const std::string& path, double now, int32_t count, int32_t minuteSpan) {
  TStringList times;
  if (platform::FileExists(path)) times.LoadFromFile(path);
  bool alert = false;
  if (!times.IsEmpty() && times.Count() >= static_cast<size_t>(count) - 1) {
    const double oldest = TextToDateTime(times[0]);
    times.Delete(0);
    alert = WholeMinutesBetween(now, oldest) < minuteSpan;
    if (alert) times.Clear();
  }
  times.Add(DateTimeToText(now));
  times.SaveToFile(path);
  return !alert;
}

}  // namespace

bool RecordVirusMail(IQuardaInstance& scan, const platform::TClock& clock) {
  const TRef<IConfig> config = scan.GetConfig();
  const int32_t count = config->GetRedAlertVirusMailCount();
  const std::string folder = scan.GetQuardaPath().Str() + "\\Temp";
  const std::string path = folder + "\\Quarda.ra";
  if (count <= 1) {
    platform::RemoveFile(path);
    return true;
  }
  try {
    platform::CreateFolders(folder);
    return AddTime(path, platform::ToDateTime(clock.Now()), count, config->GetRedAlertMinuteSpan());
  } catch (...) {
    const TErrorDescription error = DescribeCurrentError();
    scan.LogError(nullptr, "Error reading red alert file \"" + path + "\". " + error.className +
                               ": " + error.message);
    return true;
  }
}

}  // namespace quarda
