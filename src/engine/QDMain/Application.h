// The application of one request: the settings, the plug-ins and the scans that are running.
#pragma once

#include <QDIntf.h>

#include <vector>

#include "Environment.h"

namespace quarda {

class TPluginList;
class TQuardaInstance;

/// Created by RunCommandLine, which makes it the current application, starts it and closes it
/// again.
class TQuardaApp : public TRefCounted<IQuardaApp> {
 public:
  explicit TQuardaApp(const TEngineEnvironment& environment);
  ~TQuardaApp() override;

  /// Reads the settings, writes their file complete and installs the plug-ins. The application must
  /// be the current one by then. Raises what reading and writing the settings raises.
  void Start();
  /// Drops scans, plug-ins (unloading their libraries) and settings (saving them when they
  /// changed). The settings refer back to the application, so it would never end without this.
  void Close();

  TRef<IConfig> QDCALL GetConfig() override { return config_; }
  int32_t QDCALL GetInstanceCount() override { return static_cast<int32_t>(instances_.size()); }
  TRef<IQuardaInstance> QDCALL GetInstances(int32_t index) override;
  AnsiString QDCALL GetQuardaPath() override { return environment_.baseFolder; }
  TRef<IPluginList> QDCALL GetPlugins() override;
  int32_t QDCALL RunInstance(const AnsiString& commandLine) override;

 private:
  class TRunningScan;

  int32_t Scan(IQuardaInstanceEx& scan);
  int32_t ExitCodeAfterError(IQuardaInstanceEx& scan, int32_t exitCode);
  bool ReportVirus(IQuardaInstanceEx& scan, int32_t exitCode);

  TEngineEnvironment environment_;
  TRef<IConfig> config_;
  TRef<TPluginList> plugins_;
  std::vector<TRef<TQuardaInstance>> instances_;  // oldest first
};

/// Serves one request: an application, one scan of the file that the command line names, the exit
/// code (1: virus or blocked, 0 otherwise). An empty command line stands for the arguments of the
/// process. Never throws; what nothing else handled gives 0.
int32_t RunCommandLine(const AnsiString& commandLine,
                       const TEngineEnvironment& environment) noexcept;
/// The same beside the program of this process, with the clock of the system.
int32_t RunCommandLine(const AnsiString& commandLine) noexcept;

/// Writes the error that is being handled to the log, where there is no scan that could.
void LogOutsideScans(const TEngineEnvironment& environment) noexcept;

}  // namespace quarda
