#include "CheckListFile.h"

#include <CodePage.h>
#include <DateText.h>
#include <Files.h>
#include <Utils.h>

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "PatternList.h"

namespace quarda {
namespace {

constexpr std::string_view kFileName = "Quarda.clf";
constexpr std::string_view kStampPrefix = "// FileTime: ";
constexpr std::string_view kComment = "//";
constexpr std::string_view kLineEnd = "\r\n";

// A name that opens a section, and the list its lines go to.
struct TSection {
  std::string_view name;
  IStringList* (TClfFile::*list)() const noexcept;
  bool isWritten;  // false: an older name, only read
};

// In the order in which they are written.
constexpr TSection kSections[] = {
    {"Invalid Attachments", &TClfFile::GetInvalidAttachments, true},
    {"Suspicious Subjects", &TClfFile::GetSuspiciousSubjects, true},
    {"Warning Subjects", &TClfFile::GetSuspiciousSubjects, false},
    {"No Suspicious Subjects", &TClfFile::GetNoSuspiciousSubjects, true},
    {"No Warning Subjects", &TClfFile::GetNoSuspiciousSubjects, false},
    {"Virus Subjects", &TClfFile::GetVirusSubjects, true},
    {"No Virus Subjects", &TClfFile::GetNoVirusSubjects, true},
};

// "  [Name]  " without its blanks and brackets; whatever stands in the place of a bracket goes too.
std::string_view HeaderName(std::string_view line) {
  const std::string_view header = Trim(line);
  return header.size() < 2 ? std::string_view() : header.substr(1, header.size() - 2);
}

}  // namespace

std::string CheckListPath(IQuardaInstance& instance) {
  return JoinPath(instance.GetQuardaPath(), kFileName);
}

TClfFile::TClfFile(IQuardaInstance& instance, const platform::TClock& clock)
    : instance_(instance),
      clock_(clock),
      invalidAttachments_(instance.NewStringList()),
      virusSubjects_(instance.NewStringList()),
      noVirusSubjects_(instance.NewStringList()),
      suspiciousSubjects_(instance.NewStringList()),
      noSuspiciousSubjects_(instance.NewStringList()) {}

void TClfFile::Load(std::string_view fileName) {
  fileName_ = fileName;
  const TRef<IStringList> lines = instance_.NewStringList();
  if (platform::FileExists(fileName)) lines->LoadFromFile(fileName);
  LoadFromStrings(lines.Get());
}

void TClfFile::LoadFromStrings(IStringList* lines) {
  Clear();
  const int32_t count = lines ? lines->GetCount() : 0;
  if (count == 0) {
    fileTime_.clear();
    return;
  }
  IStringList* section = GetInvalidAttachments();
  bool afterHeader = true;
  bool afterComment = false;
  for (int32_t i = TakeStamp(lines->GetStrings(0)) ? 1 : 0; i < count; ++i) {
    const AnsiString line = lines->GetStrings(i);
    if (line.View().starts_with('[')) {
      section = SectionList(HeaderName(line));
      afterHeader = true;
      continue;
    }
    const std::string_view text = Trim(line);
    // A blank line is kept only where it sets a comment off from what follows.
    if (text.empty() && (afterHeader || !afterComment)) continue;
    afterHeader = false;
    afterComment = text.starts_with(kComment);
    if (section) section->Add(line);
  }
}

void TClfFile::Save(std::string_view fileName) {
  fileName_ = fileName;
  if (fileTime_.empty()) fileTime_ = DateText(clock_.Now());
  std::string text;
  text.append(kStampPrefix).append(fileTime_).append(kLineEnd).append(kLineEnd);
  for (const TSection& section : kSections) {
    if (!section.isWritten) continue;
    text.append("[").append(section.name).append("]").append(kLineEnd);
    text.append((this->*section.list)()->GetText().View()).append(kLineEnd);
  }
  platform::ReplaceFileContent(fileName, text);
}

TRef<IStringList> TClfFile::NormalList(IStringList* list) const {
  const TRef<IStringList> normal = list ? list->CopyList() : instance_.NewStringList();
  const std::vector<std::string> lines = LinesOf(normal.Get());
  normal->Clear();
  for (const std::string& line : lines) {
    const std::string_view text = Trim(line);
    if (!text.empty() && !text.starts_with(kComment)) normal->Add(line);
  }
  return normal;
}

// Whether the line is a stamp; keeps it then.
bool TClfFile::TakeStamp(std::string_view line) {
  if (!platform::SameAnsiText(line.substr(0, kStampPrefix.size()), kStampPrefix)) return false;
  fileTime_ = Trim(line.substr(kStampPrefix.size()));
  return true;
}

// Null for a section that nobody knows; its lines are dropped.
IStringList* TClfFile::SectionList(std::string_view header) const {
  for (const TSection& section : kSections) {
    if (platform::SameAnsiText(header, section.name)) return (this->*section.list)();
  }
  return nullptr;
}

void TClfFile::Clear() {
  for (const TSection& section : kSections) (this->*section.list)()->Clear();
}

}  // namespace quarda
