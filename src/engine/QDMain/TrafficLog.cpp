#include "TrafficLog.h"

#include <DateText.h>
#include <Files.h>
#include <MailRead.h>
#include <QDPlugin.h>
#include <StringList.h>

#include <algorithm>
#include <cstddef>
#include <string>

#include "EngineLog.h"

namespace quarda {
namespace {

constexpr const char* kInLog = "QDInMails.log";
constexpr const char* kOutLog = "QDOutMails.log";
constexpr const char* kVirusMark = "[VIRUS !!!]";

/// A decoded text may hold line breaks that would begin the line of a mail that never was.
void AppendField(std::string& line, std::string_view text) {
  const size_t start = line.append("[").size();
  line.append(text).append("]\t");
  std::replace_if(
      line.begin() + static_cast<ptrdiff_t>(start), line.end(),
      [](char c) { return c == '\r' || c == '\n' || c == '\0'; }, ' ');
}

std::string MailLine(IQuardaInstance& scan, const platform::TClock& clock) {
  const TRef<IMail> mail = scan.GetMail();
  const platform::TLocalTime now = clock.Now();
  std::string line;
  AppendField(line, DateText(now) + ' ' + ShortTimeText(now));
  AppendField(line, mail->GetFrom());
  AppendField(line, mail->GetSubject());
  AppendField(line, std::to_string(GetFileSize(mail->GetMailFileName())));
  AppendField(line, std::to_string(mail->GetAttachmentCount()));
  AppendField(line, mail->GetToList()->GetSeparateText(";"));
  return line;
}

void UpdateLog(const std::string& path, std::string_view line, bool isMail) {
  TStringList lines;
  if (platform::FileExists(path)) lines.LoadFromFile(path);
  if (isMail) {
    lines.Add(line);
  } else if (!lines.IsEmpty()) {  // the virus was found in an attachment file of the last mail
    const size_t last = lines.Count() - 1;
    lines.SetLine(last, std::string(lines[last]).append(line));
  }
  lines.SaveToFile(path);
}

}  // namespace

void WriteTrafficLog(IQuardaInstance& scan, const platform::TClock& clock) {
  const TOvraMailType mailType = scan.GetMailType();
  if (mailType == mtUnknown) return;
  const TRef<IConfig> config = scan.GetConfig();
  const std::string path =
      LogFolder(*config, scan.GetQuardaPath()) + (mailType == mtInMail ? kInLog : kOutLog);
  LimitLogFile(path, *config);
  const bool isMail = scan.GetFileType() != ftAttachment;
  const bool isVirus = scan.GetGlobalData(kResult) == "0";
  std::string line = isMail ? MailLine(scan, clock) : std::string();
  if (isVirus) line += kVirusMark;
  if (line.empty()) return;  // a clean attachment file changes nothing
  try {
    UpdateLog(path, line, isMail);
  } catch (...) {
    LogException(nullptr);
  }
}

}  // namespace quarda
