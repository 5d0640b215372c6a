#include "PluginSubject.h"

#include <Utils.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "CheckListFile.h"
#include "Messages.h"
#include "PatternList.h"

namespace quarda {
namespace {

constexpr std::string_view kVirusSubject = "Virus subject found \"%s\" and marked as virus";
constexpr std::string_view kVirusSubjectReason = "Virus subject found: %s";
constexpr std::string_view kSubjectNoted = "Suspicious subject found and noted in subject";
constexpr std::string_view kAlreadyNoted =
    "Suspicious subject found but was already noted in subject";
constexpr std::string_view kPassed = "passed";

constexpr std::string_view kNote = "Quarda suspicious: ";

// One check: where its patterns come from. Those of the check-list file stand before those of the
// settings.
struct TSubjectCheck {
  IStringList* (TClfFile::*listedExceptions)() const noexcept;
  TRef<IStringList> (QDCALL IConfig::*exceptions)();
  IStringList* (TClfFile::*listedPatterns)() const noexcept;
  TRef<IStringList> (QDCALL IConfig::*patterns)();
};

constexpr TSubjectCheck kVirusCheck = {&TClfFile::GetNoVirusSubjects, &IConfig::GetNoVirusSubjects,
                                       &TClfFile::GetVirusSubjects, &IConfig::GetVirusSubjects};
constexpr TSubjectCheck kSuspiciousCheck = {
    &TClfFile::GetNoSuspiciousSubjects, &IConfig::GetNoSuspiciousSubjects,
    &TClfFile::GetSuspiciousSubjects, &IConfig::GetSuspiciousSubjects};

TPatternList Join(const TClfFile& checkList, IStringList* listed,
                  const TRef<IStringList>& settings) {
  TPatternList patterns;
  patterns.AddLines(checkList.NormalList(listed).Get());
  patterns.AddLines(settings.Get());
  return patterns;
}

// The first pattern that the subject matches, unless it matches an exception.
std::optional<std::string> FindPattern(const TSubjectCheck& check, std::string_view subject,
                                       const TClfFile& checkList, IConfig& config) {
  const TPatternList exceptions =
      Join(checkList, (checkList.*check.listedExceptions)(), (config.*check.exceptions)());
  if (exceptions.FirstMatch(subject)) return std::nullopt;
  const TPatternList patterns =
      Join(checkList, (checkList.*check.listedPatterns)(), (config.*check.patterns)());
  const std::optional<size_t> match = patterns.FirstMatch(subject);
  if (!match) return std::nullopt;
  return patterns.Pattern(*match);
}

}  // namespace

bool TPluginSubject::DoExecute(IQuardaInstance& instance) {
  if (instance.GetFileType() == ftAttachment) return true;
  const TRef<IConfig> config = instance.GetConfig();
  const TRef<IMail> mail = instance.GetMail();
  const AnsiString subject = mail->GetSubject();
  TClfFile checkList(instance);
  checkList.Load(CheckListPath(instance));
  if (config->GetBlockOnVirusSubjects()) {
    if (const auto pattern = FindPattern(kVirusCheck, subject, checkList, *config)) {
      MarkAsVirus(instance, *pattern);
      return false;
    }
  }
  if (config->GetWarnOnSuspiciousSubjects() &&
      FindPattern(kSuspiciousCheck, subject, checkList, *config)) {
    NoteInSubject(instance, *mail, subject);
  }
  instance.LogOK(this, kPassed);
  return true;
}

void TPluginSubject::MarkAsVirus(IQuardaInstance& instance, std::string_view pattern) {
  instance.LogWarn(this, FillIn(kVirusSubject, {pattern}));
  instance.SetGlobalData(kVirusReason, FillIn(kVirusSubjectReason, {pattern}));
}

void TPluginSubject::NoteInSubject(IQuardaInstance& instance, IMail& mail,
                                   std::string_view subject) {
  if (subject.find(kNote) != subject.npos) {
    instance.LogWarn(this, kAlreadyNoted);
    return;
  }
  mail.SetSubject(Concat({kNote, subject}));
  instance.LogWarn(this, kSubjectNoted);
}

}  // namespace quarda
