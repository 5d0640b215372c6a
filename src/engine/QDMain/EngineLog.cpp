// Two layouts: tab-separated lines for machines, and for people a block for each scan with a header
// line. The file is opened and closed for every entry, and an entry goes out with one write, so
// entries of several processes interleave but never mix.
#include "EngineLog.h"

#include <CodePage.h>
#include <CommandLine.h>
#include <DateText.h>
#include <Files.h>
#include <NamedObjects.h>
#include <PlatformError.h>
#include <Program.h>
#include <Utils.h>

#include <algorithm>
#include <cstdint>
#include <optional>

namespace quarda {
namespace {

constexpr const char* kLogName = "Quarda.log";
constexpr const char* kSeparator = "\r\n***************\r\n";

const char* FileTypeColumn(TOvraMailFileType type) {
  switch (type) {
    case ftInMail:
      return "IN";
    case ftOutMail:
      return "OUT";
    case ftAttachment:
      break;
  }
  return "ATT";
}

std::string EntryLine(IPlugin* plugin, int32_t priority, std::string_view message,
                      std::string_view baseFolder) {
  std::string line = " ";
  if (plugin) line.append("[").append(PluginColumn(*plugin, baseFolder)).append("] ");
  if (priority == kLogError) line.append("ERROR: ");
  return line.append(message).append("\r\n");
}

bool IsNested(IQuardaInstance& scan) {
  const TRef<IQuardaApp> app = scan.GetApp();
  return app && app->GetInstanceCount() > 1;
}

bool IsFull(const platform::TFileRecord& log, IConfig& config) {
  return static_cast<uint32_t>(log.size) > config.GetLogMaxFileSize() * 1024u;
}

/// Engines that find a log full at the same time make it the backup one after the other, and all
/// but the first find a new one then. Otherwise that one would take the place of the backup.
class TBackupTurn {
 public:
  TBackupTurn() noexcept {
    constexpr uint32_t kLongestWait = 1000;
    try {
      mutex_.emplace("kestavon_Quarda_LogBackup");
      isOurs_ = mutex_->Wait(kLongestWait) != platform::TWaitResult::kTimeOut;
    } catch (const platform::EPlatformError&) {
      // Where nothing can be shared, most engines are alone.
    }
  }

  bool IsOurs() const noexcept { return isOurs_; }

 private:
  std::optional<platform::TNamedMutex> mutex_;
  bool isOurs_ = true;
};

void AppendToFile(const std::string& path, std::string_view text) {
  platform::TFile file(path, platform::TOpenMode::kAppend);
  if (!text.empty()) file.Write(text.data(), text.size());
}

}  // namespace

std::string LogFolder(IConfig& config, std::string_view baseFolder) {
  const AnsiString setting = config.GetLogFilePath();
  const std::string_view folder = Trim(setting);
  return AddTrailingBackslash(folder.empty() ? baseFolder : folder);
}

bool LimitLogFile(const std::string& path, IConfig& config) {
  const auto record = platform::FindFile(path);
  if (!record) return false;
  if (!IsFull(*record, config)) return true;
  const TBackupTurn turn;
  if (!turn.IsOurs()) return true;  // a later entry will
  if (IsFull(FileGetInfo(path), config)) BackupFile(path);
  // What could not be renamed goes. Entries that others have begun a new log with stay.
  if (IsFull(FileGetInfo(path), config)) platform::RemoveFile(path);
  return platform::FileExists(path);
}

namespace {

/// An outside plug-in may know its path in the form of this system only.
std::string LibraryPath(IPlugin& plugin) {
  std::string path = plugin.GetFileName().Str();
  return path.starts_with('/') ? platform::FullPath(path) : path;
}

}  // namespace

std::string PluginColumn(IPlugin& plugin, std::string_view baseFolder) {
  std::string column = plugin.GetName().Str();
  const std::string library = LibraryPath(plugin);
  if (platform::SameAnsiText(library, platform::ModulePath())) return column;
  const std::string relative = RelativePath(AddTrailingBackslash(baseFolder), library);
  column.append("@");
  return column.append(library.size() < relative.size() ? library : relative);
}

std::string TEngineLog::SingleLine(IQuardaInstance& scan, IPlugin* plugin, int32_t priority,
                                   std::string_view message) const {
  const platform::TLocalTime now = clock_.Now();
  const char* const priorityName = PriNames[std::clamp(priority, 0, 5)];
  std::string line = DateText(now) + '\t' + TimeText(now) + '\t';
  line.append(FileTypeColumn(scan.GetFileType())).append("\t");
  line.append(scan.GetArguments()->GetName()).append("\t");
  line.append(priorityName).append("\t");
  if (plugin) line.append(PluginColumn(*plugin, scan.GetQuardaPath()));
  return line.append("\t").append(message).append("\r\n");
}

std::string TEngineLog::Header(IQuardaInstance& scan, bool newFile, int32_t logMode) const {
  const platform::TLocalTime now = clock_.Now();
  const TRef<IArguments> arguments = scan.GetArguments();
  const std::string time = DateText(now) + ' ' + TimeText(now);
  const std::string name = arguments->GetName().Str();
  if (IsNested(scan)) return time + " eml Attachment:" + name + "\r\n";
  std::string header;
  if (!newFile && scan.GetFileType() != ftAttachment) header = kSeparator;
  header.append(time).append(" ").append(name).append("\r\n");
  if (logMode >= kLogDebug) {
    header.append(" Arguments: ");
    header.append(ExtractCmdArguments(arguments->GetCommandLine())).append("\r\n");
  }
  return header;
}

void TEngineLog::Write(IQuardaInstance& scan, IPlugin* plugin, int32_t priority,
                       std::string_view message) {
  const TRef<IConfig> config = scan.GetConfig();
  if (!config) return;
  const int32_t logMode = config->GetLogMode();
  const bool filtered = priority > logMode;
  // An entry limits and creates the file even when it is not written itself. One that was seen to
  // this need not be looked at again for every such entry, unless this scan made it grow.
  const bool hasHeader = headerWritten_ || config->GetLogSingleLine();
  if (filtered && hasHeader && isInOrder_) return;
  const std::string path = LogFolder(*config, scan.GetQuardaPath()) + kLogName;
  const bool newFile = !LimitLogFile(path, *config);
  std::string text;
  if (config->GetLogSingleLine()) {
    if (!filtered) text = SingleLine(scan, plugin, priority, message);
  } else {
    if (!headerWritten_) text = Header(scan, newFile, logMode);
    headerWritten_ = true;
    if (!filtered) text += EntryLine(plugin, priority, message, scan.GetQuardaPath());
  }
  isInOrder_ = text.empty();
  if (text.empty() && !newFile) return;  // opening and closing it would change nothing
  try {
    AppendToFile(path, text);
  } catch (const platform::EPlatformError&) {
    // The log of a mail must never stop its scan.
  }
}

}  // namespace quarda
