#include "RedAlert.h"

#include <CodePage.h>
#include <Errors.h>
#include <Files.h>
#include <StringList.h>
#include <Utils.h>

#include <charconv>
#include <cmath>
#include <string>

namespace quarda {
namespace {

constexpr double kMillisecondsPerDay = 24.0 * 60 * 60 * 1000;
constexpr double kMillisecondsPerMinute = 60.0 * 1000;

/// A date-time value with up to 15 significant digits and the decimal separator of the user.
std::string DateTimeToText(double value) {
  char buffer[40];
  const auto end =
      std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, 15);
  std::string text(buffer, end.ptr);
  const size_t point = text.find('.');
  if (point != std::string::npos) text[point] = platform::DecimalSeparator();
  return text;
}

double TextToDateTime(std::string_view text) {
  std::string number(Trim(text));
  const size_t separator = number.find(platform::DecimalSeparator());
  if (separator != std::string::npos) number[separator] = '.';
  double value = 0;
  const char* const end = number.data() + number.size();
  const auto read = std::from_chars(number.data(), end, value);
  if (read.ec != std::errc() || read.ptr != end || !std::isfinite(value)) {
    throw EConvertError("'" + std::string(text) + "' is not a valid floating point value");
  }
  return value;
}

double WholeMinutesBetween(double a, double b) {
  // Whole milliseconds first: a date-time value is not exact, and a minute must not be lost to
  // that.
  const double milliseconds = std::round(std::abs(a - b) * kMillisecondsPerDay);
  return std::floor(milliseconds / kMillisecondsPerMinute);
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
