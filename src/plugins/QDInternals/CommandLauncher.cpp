#include "CommandLauncher.h"

#include <Errors.h>
#include <Files.h>
#include <PlatformError.h>
#include <Process.h>
#include <Utils.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "CommandLine.h"
#include "CommandMacros.h"
#include "PifFile.h"
#include "StaleFiles.h"

namespace quarda {
namespace {

constexpr std::string_view kChangeFolder = "$chdir$";
constexpr std::string_view kNoWait = "$nowait$";
constexpr std::string_view kHide = "$hide$";
constexpr std::string_view kSaveMail = "$savemail$";
constexpr std::string_view kOnlyMail = "$onlymail$";
constexpr std::string_view kOnlyAttachment = "$onlyattachment$";
constexpr std::string_view kNoExit = "$noexit$";

constexpr std::string_view kSubjectFileName = "Quarda";
constexpr std::string_view kSubjectFileExt = ".sbj";

/// The settings count in seconds; 0 and less mean for ever.
std::optional<std::chrono::milliseconds> WaitLimit(int32_t seconds) {
  if (seconds <= 0) return std::nullopt;
  return std::chrono::seconds(seconds);
}

/// The flags of a hook, and what is left of its command without them.
struct THook {
  explicit THook(std::string_view configured)
      : changeFolder(HasFlag(configured, kChangeFolder)),
        wait(!HasFlag(configured, kNoWait)),
        hide(HasFlag(configured, kHide)),
        saveMail(HasFlag(configured, kSaveMail)),
        onlyMail(HasFlag(configured, kOnlyMail)),
        onlyAttachment(HasFlag(configured, kOnlyAttachment)),
        command(configured) {
    for (const std::string_view flag :
         {kOnlyAttachment, kOnlyMail, kSaveMail, kNoWait, kHide, kChangeFolder}) {
      command = RemoveFlag(command, flag);
    }
    command = std::string(Trim(command));
  }

  bool RunsFor(TOvraMailFileType type) const {
    return type == ftAttachment ? !onlyMail : !onlyAttachment;
  }
  /// The folder of the program, when the hook wants to start there.
  std::string Folder() const {
    if (!changeFolder) return {};
    std::string program = ExtractCmdFileName(command);
    std::ranges::replace(program, '/', '\\');
    return ExtractFileDir(program);
  }

  const bool changeFolder;
  const bool wait;
  const bool hide;
  const bool saveMail;
  const bool onlyMail;
  const bool onlyAttachment;
  std::string command;
};

/// A file that holds the subject of the mail while a program runs.
class TSubjectFile {
 public:
  TSubjectFile() = default;
  TSubjectFile(const TSubjectFile&) = delete;
  TSubjectFile& operator=(const TSubjectFile&) = delete;
  ~TSubjectFile() {
    if (!path_.empty()) platform::RemoveExactFile(path_);
  }

  /// Writes it and returns its path. The name is known to everybody, so the file is created anew,
  /// for this user alone; while another scan, or somebody else, has the name, the file gets a
  /// number.
  const std::string& Write(std::string_view subject) {
    constexpr int kLastNumber = 999;
    for (int i = 0; path_.empty(); ++i) {
      const std::string number = i == 0 ? "" : std::to_string(i);
      const std::string path = Concat({GetTempDir(), kSubjectFileName, number, kSubjectFileExt});
      if (Create(path, subject) || (RemoveIfStale(path) && Create(path, subject))) break;
      if (i == kLastNumber) throw EError("No free name for a subject file.");
    }
    return path_;
  }

 private:
  /// False when the file cannot be created; with a file that cannot be written nothing else helps.
  bool Create(const std::string& path, std::string_view subject) {
    try {
      platform::TFile file(path, platform::TOpenMode::kCreateNew);
      path_ = path;
      file.Write(subject.data(), subject.size());
    } catch (const platform::EPlatformError&) {
      if (!path_.empty()) throw;
    }
    return !path_.empty();
  }
  /// Of a scan that was killed. No program is waited for that long.
  static bool RemoveIfStale(const std::string& path) {
    const auto stamp = platform::FileStamp(path);
    return stamp && *stamp < OldestFreshStamp(platform::SystemClock()) &&
           platform::RemoveExactFile(path);
  }

  std::string path_;
};

TMacroValue Single(std::string text) { return {{std::move(text)}}; }

TMacroValue MailText(std::string_view text) { return {{ArgumentText(text)}, false, true}; }

TMacroValue Recipient(IMail& mail) {
  const TRef<IStringList> recipients = mail.GetToList();
  if (!recipients || recipients->GetCount() == 0) return MailText({});
  return MailText(mail.ExtractEmailAddress(recipients->GetStrings(0)));
}

TMacroValue AttachmentNames(IMail& mail) {
  TMacroValue names{{}, true, true};
  const int32_t count = mail.GetAttachmentCount();
  for (int32_t i = 0; i < count; ++i) {
    names.texts.push_back(ArgumentText(mail.GetAttachments(i)->GetFileName()));
  }
  return names;
}

/// In the order in which they are looked for.
std::vector<TCommandMacro> HookMacros(IMail& mail, TSubjectFile& subjectFile) {
  std::vector<TCommandMacro> macros = FileMacros();
  macros.insert(
      macros.end(),
      {{"$mailfile$", TMacroSearch::kEvery, [&] { return Single(mail.GetMailFileName().Str()); }},
       {"$subject$", TMacroSearch::kFirst,
        [&] { return Single(subjectFile.Write(mail.GetSubject())); }},
       {"$sender$", TMacroSearch::kEvery,
        [&] { return MailText(mail.ExtractEmailAddress(mail.GetFrom())); }},
       {"$recipient$", TMacroSearch::kEvery, [&] { return Recipient(mail); }},
       {"$attachmentcount$", TMacroSearch::kEvery,
        [&] { return Single(std::to_string(mail.GetAttachmentCount())); }},
       {"$attachmentfilenames$", TMacroSearch::kFirst, [&] { return AttachmentNames(mail); }}});
  return macros;
}

/// Makes way for a start that needs no PIF, or starts a DOS program through one.
std::string WithPif(std::string_view program, std::string line) {
  if (!platform::StartsDosProgramsThroughPif()) {
    if (!program.empty()) platform::RemoveExactFile(PifName(program));
    return line;
  }
  if (GetFileInfo(program) != kDosProgram) return line;
  const std::string arguments = ExtractCmdArguments(line);
  return Concat({"\"", CreatePifFile(program), "\"", arguments.empty() ? "" : " ", arguments});
}

}  // namespace

uint32_t StartApplication(IQuardaInstance& scan, IPlugin* plugin, std::string_view command) {
  const TRef<IMail> mail = scan.GetMail();
  if (!mail) return 0;
  const THook hook(command);
  if (hook.saveMail) mail->Save();
  if (!hook.RunsFor(scan.GetFileType())) return kNoExitCode;

  TSubjectFile subjectFile;
  const TExpandedCommand expanded({}, hook.command, HookMacros(*mail, subjectFile));
  try {
    platform::TProcess process({expanded.ForStart(), hook.Folder(), hook.hide});
    if (!hook.wait) return kNoExitCode;
    process.Wait(WaitLimit(scan.GetConfig()->GetMaxExecWaitTime()));
    return process.ExitCode();
  } catch (const platform::EPlatformError& error) {
    LogLastError(scan, plugin, error.Code());
    return kNoExitCode;
  }
}

TExecution ExecuteProcess(std::string_view command, int32_t waitSeconds, bool show,
                          std::string_view folder) {
  const bool ignoresExitCode = HasFlag(command, kNoExit);
  const std::string configured = RemoveFlag(command, kNoExit);
  const std::string line =
      WithPif(ExtractCmdFileName(configured), ExpandCommand(configured).ForStart());
  TExecution result;
  try {
    platform::TProcess process({line, folder, !show});
    result.started = true;
    if (!process.Wait(WaitLimit(waitSeconds))) process.Terminate(0);
    result.crashed = process.Crashed();
    if (!ignoresExitCode) result.exitCode = process.ExitCode();
  } catch (const platform::EPlatformError& error) {
    result.error = error.Code();
  }
  return result;
}

void LogLastError(IQuardaInstance& scan, IPlugin* plugin, uint32_t code) {
  if (code != 0) scan.LogError(plugin, "Execute error: " + platform::ErrorText(code));
}

}  // namespace quarda
