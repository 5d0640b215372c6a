#include "ScanInstance.h"

#include <CodePage.h>
#include <CurrentApp.h>
#include <Files.h>
#include <PlatformError.h>
#include <QDMailAdapters.h>
#include <QDPlugin.h>
#include <QDStringsAdapters.h>
#include <StaleFiles.h>
#include <Utils.h>

#include <chrono>
#include <memory>
#include <new>
#include <thread>

#include "Arguments.h"
#include "EngineLog.h"
#include "MailTypeFile.h"
#include "RedAlert.h"
#include "Statistics.h"
#include "TrafficLog.h"

namespace quarda {
namespace {

constexpr const char* kUnknownReason = "Unknown reason. See log file.";
// The server asks for a scan of this name by mistake; no such file is ever meant.
constexpr const char* kServerFaultName = "mails\\tempm";
/// Bodies of larger mails stay in the file until somebody asks for them.
constexpr int32_t kLargestResidentMail = 8 * 1024 * 1024;
constexpr int kSaveRetries = 3;
constexpr std::chrono::milliseconds kSaveRetryPause{10};

/// The plug-in at the index when it takes part in the scan, else null. An outside plug-in may have
/// added a null reference to the list: it stands for nobody.
TRef<IPlugin> ActivePlugin(IPluginList& plugins, const std::vector<bool>& inactive, int32_t index) {
  const auto at = static_cast<size_t>(index);
  return at < inactive.size() && inactive[at] ? nullptr : plugins.GetPlugins(index);
}

/// Saves the mail to its file, trying again for a moment when the file cannot be created because
/// somebody else still holds it.
void SaveWithRetries(TMail& mail, const std::string& path, platform::TDurability durability) {
  for (int retriesLeft = kSaveRetries;; --retriesLeft) {
    try {
      mail.SaveToFile(path, durability);
      return;
    } catch (const EFileCreateError&) {
      if (retriesLeft == 0) {
        LogException(nullptr);
        return;
      }
    }
    std::this_thread::sleep_for(kSaveRetryPause);
  }
}

}  // namespace

TQuardaInstance::TQuardaInstance(const AnsiString& commandLine,
                                 const TEngineEnvironment& environment, TQuardaInstance* outer)
    : environment_(environment),
      outer_(outer),
      mailInterface_(MailAdapter(mail_)),
      arguments_(MakeRef<TArguments>(commandLine)),
      log_(*environment_.clock) {}

TRef<IQuardaApp> TQuardaInstance::GetApp() { return GetQuardaApp(); }

TRef<IPluginList> TQuardaInstance::GetPlugins() {
  const TRef<IQuardaApp> app = GetApp();
  return app ? app->GetPlugins() : nullptr;
}

TRef<IConfig> TQuardaInstance::GetConfig() {
  const TRef<IQuardaApp> app = GetApp();
  return app ? app->GetConfig() : nullptr;
}

bool TQuardaInstance::IsSoleInstance() {
  const TRef<IQuardaApp> app = GetApp();
  return !app || app->GetInstanceCount() <= 1;
}

TOvraMailFileType TQuardaInstance::GetFileType() {
  if (!(arguments_->GetFileExt() == ".inp")) return ftAttachment;
  const std::string name = platform::LowerAnsi(arguments_->GetName());
  if (name.starts_with("in_")) return ftInMail;
  return name.starts_with("out_") ? ftOutMail : ftAttachment;
}

bool TQuardaInstance::KeepsBodies() {
  // The notice goes into every text part, so an outgoing mail is needed whole.
  if (GetFileType() == ftOutMail && GetConfig()->GetShowScannedText()) return true;
  return FileGetSize(pendingMail_) <= kLargestResidentMail;
}

TRef<IMail> TQuardaInstance::GetMail() {
  if (!pendingMail_.empty()) {
    mail_.Clear();
    mail_.KeepBodies = KeepsBodies();
    mail_.Releasable = !IsSoleInstance();  // mails in mails in mails: their sizes add up
    if (platform::FileExists(pendingMail_)) mail_.LoadFromFile(pendingMail_);
    pendingMail_.clear();
  }
  return mailInterface_;
}

void TQuardaInstance::Log(IPlugin* plugin, int32_t priority, const AnsiString& message) {
  log_.Write(*this, plugin, priority, message);
}

void TQuardaInstance::LogError(IPlugin* plugin, const AnsiString& message) {
  Log(plugin, kLogError, message);
}

void TQuardaInstance::LogWarn(IPlugin* plugin, const AnsiString& message) {
  Log(plugin, kLogWarning, message);
}

void TQuardaInstance::LogExtra(IPlugin* plugin, const AnsiString& message) {
  Log(plugin, kLogExtended, message);
}

void TQuardaInstance::LogOK(IPlugin* plugin, const AnsiString& message) {
  Log(plugin, kLogPassed, message);
}

void TQuardaInstance::LogDebug(IPlugin* plugin, const AnsiString& message) {
  Log(plugin, kLogDebug, message);
}

void TQuardaInstance::VirusReason(IPlugin* plugin, const AnsiString& message) {
  LogWarn(plugin, message);
  SetGlobalData(kVirusReason, message);
}

TRef<IStringList> TQuardaInstance::NewStringList() { return NewStringListAdatper(); }

TRef<IMail> TQuardaInstance::LoadMailFromMemory(const char* data, int32_t size) {
  if (!data || size <= 0) return {};
  try {
    auto mail = std::make_unique<TMail>();
    TMemoryStream stream(std::string_view(data, static_cast<size_t>(size)));
    mail->LoadFromStream(stream);
    return MailAdapterOwned(std::move(mail));
  } catch (const std::exception&) {  // null tells the caller
    return {};
  }
}

TRef<IMail> TQuardaInstance::LoadMailFromFile(const AnsiString& fileName) {
  try {
    auto mail = std::make_unique<TMail>();
    mail->LoadFromFile(fileName);
    return MailAdapterOwned(std::move(mail));
  } catch (const std::bad_alloc&) {
    throw;                           // says nothing about the mail
  } catch (const std::exception&) {  // null tells the caller
    return {};
  }
}

void TQuardaInstance::SetGlobalData(const AnsiString& name, const AnsiString& value) {
  globalData_.SetValue(name, value);
}

AnsiString TQuardaInstance::GetGlobalData(const AnsiString& name) {
  return globalData_.Value(name);
}

bool TQuardaInstance::Initialize() {
  SetGlobalData(kIgnoreResult, "0");
  SetGlobalData(kResult, "1");
  SetGlobalData(kVirusReason, kUnknownReason);
  mailType_ = mtUnknown;
  const AnsiString fileName = arguments_->GetFilename();
  if (fileName.IsEmpty()) {
    LogDebug(nullptr, "No filename.");
    return false;
  }
  if (fileName == kServerFaultName) {
    LogDebug(nullptr, "Known Ovra Server bug.");
    return false;
  }
  RememberMailType();
  return !IsExcludedDirection();
}

void TQuardaInstance::RememberMailType() {
  const TMailTypeFile file(environment_.baseFolder);
  const TOvraMailFileType fileType = GetFileType();
  if (fileType == ftAttachment) {
    own_ = outer_ ? outer_->MailAround() : file.Read();
    pendingMail_ = own_.mailFile;
  } else {
    pendingMail_ = arguments_->GetFilename().Str();
    // The scans of the attachment files may run in another current folder.
    own_ = {fileType == ftInMail ? mtInMail : mtOutMail, platform::FullPath(pendingMail_)};
    if (!outer_ || !(file.Read() == own_)) file.Write(own_);
    if (outer_) outer_->inner_ = own_;
  }
  mailType_ = own_.mailType;
}

/// The mail to which an attachment file scanned right inside this scan belongs: the attached mail
/// until its file is gone or the mail-type file names this scan's mail again (another engine may
/// have a file of the attached mail's name by then). Nothing else in that file counts: engines
/// overwrite it for each other.
TMailTypeRecord TQuardaInstance::MailAround() {
  if (inner_.mailFile.empty()) return own_;
  const bool hasEnded = !platform::FileExists(inner_.mailFile) ||
                        TMailTypeFile(environment_.baseFolder).Read() == own_;
  if (hasEnded) inner_ = {};
  return hasEnded ? own_ : inner_;
}

bool TQuardaInstance::IsExcludedDirection() {
  const TMailCheckMode mode = GetConfig()->GetMailCheckMode();
  return (mailType_ == mtInMail && mode == mcmOutgoing) ||
         (mailType_ == mtOutMail && mode == mcmIncomming);
}

bool TQuardaInstance::Execute() {
  const TRef<IPluginList> plugins = GetPlugins();
  const TInactive inactive = InitPlugins(*plugins);
  const bool passed = ExecutePlugins(*plugins, inactive);
  FinishPlugins(*plugins, inactive, passed);
  SetGlobalData(kResult, passed ? "1" : "0");
  if (passed && GetFileType() != ftAttachment && mail_.GetModified() && !mail_.LoadFailed())
    WriteBack();
  if (GetConfig()->GetLogInOut() && IsSoleInstance()) {
    WriteTrafficLog(*this, *environment_.clock);
  }
  return passed;
}

TQuardaInstance::TInactive TQuardaInstance::InitPlugins(IPluginList& plugins) {
  const int32_t count = plugins.GetCount();
  TInactive inactive(static_cast<size_t>(count));
  for (int32_t i = 0; i < count; ++i) {
    const TRef<IPlugin> plugin = plugins.GetPlugins(i);
    inactive[static_cast<size_t>(i)] = !plugin || !plugin->Init(this);
  }
  return inactive;
}

bool TQuardaInstance::ExecutePlugins(IPluginList& plugins, const TInactive& inactive) {
  bool result = true;
  const int32_t count = plugins.GetCount();  // with those that were loaded while initialising
  for (int32_t i = 0; i < count; ++i) {
    const TRef<IPlugin> plugin = ActivePlugin(plugins, inactive, i);
    if (!plugin) continue;
    try {
      result = plugin->Execute(this);
    } catch (const std::bad_alloc&) {
      LogException(plugin.Get());
      if (!IsSoleInstance()) throw;
    } catch (...) {
      LogException(plugin.Get());
    }
    result = ConfirmedResult(plugins, inactive, {plugin.Get(), i}, result);
    if (!result) break;
  }
  return result;
}

bool TQuardaInstance::ConfirmedResult(IPluginList& plugins, const TInactive& inactive,
                                      const TExecuted& executed, bool result) {
  try {
    const int32_t count = plugins.GetCount();
    for (int32_t j = 0; j < count; ++j) {
      if (j == executed.index) continue;
      const TRef<IPlugin> asked = ActivePlugin(plugins, inactive, j);
      const bool later = j > executed.index;
      if (asked && !asked->ConfirmResult(this, executed.plugin, later, result)) return !result;
    }
  } catch (...) {
    // A plug-in that fails while it is asked has no say.
  }
  return result;
}

void TQuardaInstance::FinishPlugins(IPluginList& plugins, const TInactive& inactive, bool result) {
  try {
    const int32_t count = plugins.GetCount();
    for (int32_t i = 0; i < count; ++i) {
      const TRef<IPlugin> plugin = ActivePlugin(plugins, inactive, i);
      if (plugin) plugin->Done(this, result);
    }
  } catch (...) {
    LogException(nullptr);
  }
}

void TQuardaInstance::WriteBack() {
  const std::string path = platform::FullPath(mail_.GetMailFileName());
  const std::string folder = ExtractFileDir(path);
  const bool isTemporary =
      !IsSoleInstance() && platform::SameAnsiText(folder, GetQuardaPath().Str() + "\\Temp");
  const auto durability =
      isTemporary ? platform::TDurability::kPassing : platform::TDurability::kFlushed;
  if (platform::FolderExists(folder)) SaveWithRetries(mail_, path, durability);
  // The server sees by the stamp that the file changed, even when that took less than the two
  // seconds a stamp can tell apart.
  if (const auto stamp = platform::FileStamp(path)) {
    platform::SetFileStamp(path, platform::AddToDosStamp(*stamp, 1));
  }
}

bool TQuardaInstance::AddRedAlertFile() {
  // A mail counts once, however many viruses the scans inside it find.
  return !IsSoleInstance() || RecordVirusMail(*this, *environment_.clock);
}

void TQuardaInstance::WriteStatistic(bool redAlert, int32_t exitCode) {
  if (!IsSoleInstance()) return;
  if (CountScan(*this, redAlert, exitCode, *environment_.clock)) TidyUp();
}

/// Removes what scans killed long ago left in the folders that scans write to.
void TQuardaInstance::TidyUp() noexcept {
  try {
    const platform::TClock& clock = *environment_.clock;
    const std::string base = GetQuardaPath().Str();
    const std::string path = platform::FullPath(arguments_->GetFilename());
    RemoveStaleFiles(base, {}, clock);
    RemoveStaleFiles(LogFolder(*GetConfig(), base), {}, clock);
    RemoveStaleFiles(ExtractFileDir(path), {}, clock);
    RemoveStaleFiles(base + "\\Temp",
                     {{"In_", 5, "*"}, {"Out_", 5, "*"}, {"Temp", 4, "*"}, {"Quarda.", 3, ""}},
                     clock);
  } catch (...) {
    // They are in nobody's way until the next day.
  }
}

}  // namespace quarda
