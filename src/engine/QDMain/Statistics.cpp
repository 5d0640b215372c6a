#include "Statistics.h"

#include <DateText.h>
#include <Files.h>
#include <StaleFiles.h>
#include <StringList.h>
#include <Utils.h>

#include <string>

namespace quarda {
namespace {

constexpr const char* kCounters[] = {"Mails",   "Virus",    "InMails",  "OutMails",
                                     "InVirus", "OutVirus", "RedAlerts"};

TStringList NewStatistics(const platform::TLocalTime& today) {
  TStringList lines;
  lines.Add(DateText(today));
  lines.Add("");
  for (const char* counter : kCounters) lines.Add(std::string(counter) + "=0");
  return lines;
}

void Increment(TStringList& lines, std::string_view counter) {
  const int32_t value = TryStrToInt(lines.Value(counter)).value_or(0);
  // A counter at its end stays there instead of turning negative.
  lines.SetValue(counter, std::to_string(value == INT32_MAX ? value : value + 1));
}

void Count(TStringList& lines, TOvraMailFileType fileType, bool redAlert, bool isVirus) {
  const bool isInMail = fileType == ftInMail;
  if (fileType != ftAttachment) {
    Increment(lines, "Mails");
    Increment(lines, isInMail ? "InMails" : "OutMails");
  }
  if (isVirus) {
    Increment(lines, "Virus");
    Increment(lines, isInMail ? "InVirus" : "OutVirus");
  }
  if (redAlert) Increment(lines, "RedAlerts");
}

}  // namespace

bool CountScan(IQuardaInstance& scan, bool redAlert, int32_t exitCode,
               const platform::TClock& clock) noexcept {
  bool isFirst = true;
  try {
    const std::string path = StatisticsPath(scan);
    const auto lastCounted = platform::FileStamp(path);
    isFirst = IsFirstScanOfDay(lastCounted, clock);
    TStringList lines;
    if (lastCounted) {
      lines.LoadFromFile(path);
    } else {
      lines = NewStatistics(clock.Now());
    }
    Count(lines, scan.GetFileType(), redAlert, exitCode != 0);
    platform::ReplaceFileContent(path, lines.Text(), platform::TDurability::kPassing);
  } catch (...) {
    // Without its folder, or without room on the disk, nothing is counted.
  }
  return isFirst;
}

}  // namespace quarda
