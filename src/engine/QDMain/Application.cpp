#include "Application.h"

#include <CurrentApp.h>
#include <InternalPlugins.h>
#include <QDConfig.h>
#include <QDPlugin.h>
#include <RedAlertAction.h>
#include <Utils.h>

#include <algorithm>
#include <new>
#include <string>

#include "PluginList.h"
#include "ScanInstance.h"

namespace quarda {
namespace {

constexpr const char* kSettingsName = "Quarda.ini";
/// Names no file; an empty one would stand for the arguments of the process.
constexpr const char* kNoCommandLine = "quarda";
constexpr const char* kNoMemory = "Not enough memory to check what is attached";

}  // namespace

/// Keeps a scan among the running ones for a scope.
class TQuardaApp::TRunningScan {
 public:
  TRunningScan(TQuardaApp& app, TRef<TQuardaInstance> scan) : app_(app), scan_(std::move(scan)) {
    app_.instances_.push_back(scan_);
  }
  TRunningScan(const TRunningScan&) = delete;
  TRunningScan& operator=(const TRunningScan&) = delete;
  ~TRunningScan() {
    std::erase_if(app_.instances_, [this](const TRef<TQuardaInstance>& running) {
      return running.Get() == scan_.Get();
    });
  }

  TQuardaInstance& Get() const { return *scan_; }

 private:
  TQuardaApp& app_;
  TRef<TQuardaInstance> scan_;
};

TQuardaApp::TQuardaApp(const TEngineEnvironment& environment) : environment_(environment) {}

TQuardaApp::~TQuardaApp() = default;

void TQuardaApp::Start() {
  config_ = MakeRef<TConfig>(kSettingsName, this);
  config_->BuildConfigFile();
  plugins_ = MakeRef<TPluginList>();
  InstallInternalPlugins(this);
}

void TQuardaApp::Close() {
  instances_.clear();
  if (plugins_) plugins_->Clear();  // a plug-in may hold the list, and would hold itself so
  plugins_.Reset();
  config_.Reset();
}

TRef<IPluginList> TQuardaApp::GetPlugins() { return plugins_; }

TRef<IQuardaInstance> TQuardaApp::GetInstances(int32_t index) {
  if (index < 0 || index >= GetInstanceCount()) RaiseListIndex(index);
  return TRef<IQuardaInstance>(instances_[static_cast<size_t>(index)]);
}

int32_t TQuardaApp::RunInstance(const AnsiString& commandLine) {
  TQuardaInstance* const outer = instances_.empty() ? nullptr : instances_.back().Get();
  if (outer) outer->ReleaseMemory();
  const TRunningScan running(*this, MakeRef<TQuardaInstance>(commandLine, environment_, outer));
  return Scan(running.Get());
}

int32_t TQuardaApp::Scan(IQuardaInstanceEx& scan) {
  int32_t exitCode = 0;
  bool redAlert = false;
  try {
    if (!scan.Initialize()) return 0;
    if (!scan.Execute()) exitCode = 1;
    if (exitCode != 0) redAlert = ReportVirus(scan, exitCode);
  } catch (...) {
    exitCode = ExitCodeAfterError(scan, exitCode);
  }
  scan.WriteStatistic(redAlert, exitCode);
  if (!(scan.GetGlobalData(kIgnoreResult) == "0")) exitCode = 0;
  scan.LogDebug(nullptr, "Quarda finished.");
  return exitCode;
}

/// To be called where an error was caught. No error blocks a mail, with one exception: the sender
/// decides how much memory the mails inside a mail need, and could hide a virus behind too much.
int32_t TQuardaApp::ExitCodeAfterError(IQuardaInstanceEx& scan, int32_t exitCode) {
  LogException(nullptr);
  try {
    throw;
  } catch (const std::bad_alloc&) {
    if (instances_.size() > 1) {
      scan.VirusReason(nullptr, kNoMemory);
      for (const auto& running : instances_) running->SetGlobalData(kVirusReason, kNoMemory);
      return 1;
    }
  } catch (...) {
  }
  if (exitCode != 0) {
    scan.LogError(nullptr, "Force ExitCode from " + std::to_string(exitCode) + " to 0.");
  }
  return 0;
}

/// Tells of a virus mail; returns whether it raised a red alert.
bool TQuardaApp::ReportVirus(IQuardaInstanceEx& scan, int32_t exitCode) {
  if (scan.GetGlobalData(kIgnoreResult) == "0") {
    scan.LogWarn(nullptr, "returned ExitCode: " + std::to_string(exitCode));
  }
  const bool redAlert = !scan.AddRedAlertFile();
  if (redAlert) {
    scan.LogWarn(nullptr, "!!! RedAlert !!!");
    PerformRedAlertAction(scan);
  }
  return redAlert;
}

namespace {

/// Closes the current application when the engine is unloaded: a plug-in may end the process in the
/// middle of a request.
struct TCloseAtUnloading {
  ~TCloseAtUnloading() {
    const TRef<IQuardaApp> current = GetQuardaApp();
    if (auto* const app = dynamic_cast<TQuardaApp*>(current.Get())) app->Close();
    SetQuardaApp(nullptr);
  }
};

/// The life of an application as the current one.
class TCurrentRequest {
 public:
  explicit TCurrentRequest(const TEngineEnvironment& environment)
      : app_(MakeRef<TQuardaApp>(environment)) {
    static const TCloseAtUnloading closeAtUnloading;
    SetQuardaApp(app_);
  }
  TCurrentRequest(const TCurrentRequest&) = delete;
  TCurrentRequest& operator=(const TCurrentRequest&) = delete;
  ~TCurrentRequest() {
    app_->Close();
    SetQuardaApp(nullptr);
  }

  TQuardaApp& App() const { return *app_; }

 private:
  TRef<TQuardaApp> app_;
};

}  // namespace

void LogOutsideScans(const TEngineEnvironment& environment) noexcept {
  try {
    const TErrorDescription error = DescribeCurrentError();
    const TCurrentRequest request(environment);
    request.App().Start();
    const auto nobody = MakeRef<TQuardaInstance>(kNoCommandLine, environment);
    nobody->LogError(nullptr, "Exception class " + error.className + ": " + error.message);
  } catch (...) {
    // There is nowhere left to tell it.
  }
}

int32_t RunCommandLine(const AnsiString& commandLine,
                       const TEngineEnvironment& environment) noexcept {
  try {
    const TCurrentRequest request(environment);
    request.App().Start();
    return request.App().RunInstance(commandLine);
  } catch (...) {
    return 0;  // an error that nothing else handled never blocks a mail
  }
}

int32_t RunCommandLine(const AnsiString& commandLine) noexcept {
  try {
    return RunCommandLine(commandLine, TEngineEnvironment());
  } catch (...) {
    return 0;  // the system does not say where the program lies
  }
}

}  // namespace quarda
