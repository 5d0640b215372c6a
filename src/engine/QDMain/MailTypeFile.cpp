#include "MailTypeFile.h"

#include <CodePage.h>
#include <Files.h>
#include <PlatformError.h>
#include <StringList.h>

namespace quarda {
namespace {

constexpr const char* kInMail = "inmail";
constexpr const char* kOutMail = "outmail";

TOvraMailType MailTypeOf(std::string_view word) {
  if (platform::SameAnsiText(word, kInMail)) return mtInMail;
  return platform::SameAnsiText(word, kOutMail) ? mtOutMail : mtUnknown;
}

}  // namespace

TMailTypeFile::TMailTypeFile(std::string_view baseFolder)
    : folder_(std::string(baseFolder) + "\\Temp"), path_(folder_ + "\\Quarda.mai") {}

TMailTypeRecord TMailTypeFile::Read() const {
  platform::CreateFolders(folder_);
  TStringList lines;
  try {
    if (platform::FileExists(path_)) lines.LoadFromFile(path_);
  } catch (const platform::EPlatformError&) {
    return {};
  }
  while (lines.Count() < 2) lines.Add("");
  return {MailTypeOf(lines[0]), std::string(lines[1])};
}

void TMailTypeFile::Write(const TMailTypeRecord& record) const {
  platform::CreateFolders(folder_);
  TStringList lines;
  lines.Add(record.mailType == mtInMail ? kInMail : kOutMail);
  lines.Add(record.mailFile);
  platform::ReplaceFileContent(path_, lines.Text(), platform::TDurability::kPassing);
}

}  // namespace quarda
