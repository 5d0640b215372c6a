// The scan of one file: what the file is, its mail, the values its plug-ins share, and the chain of
// plug-ins that gives the verdict.
#pragma once

#include <MailRead.h>
#include <QDIntf.h>
#include <StringList.h>

#include <string>
#include <vector>

#include "EngineLog.h"
#include "Environment.h"
#include "MailTypeFile.h"

namespace quarda {

/// One scan. Created, initialised, executed and dropped by the application's RunInstance. It
/// reaches settings, plug-ins and base folder through the current application.
class TQuardaInstance : public TRefCounted<IQuardaInstanceEx, IQuardaInstance> {
 public:
  /// An empty command line stands for the arguments of the process.
  /// A nested scan is told of the one around it, which must outlive it.
  TQuardaInstance(const AnsiString& commandLine, const TEngineEnvironment& environment,
                  TQuardaInstance* outer = nullptr);

  TRef<IArguments> QDCALL GetArguments() override { return arguments_; }
  TRef<IPluginList> QDCALL GetPlugins() override;
  TRef<IConfig> QDCALL GetConfig() override;
  TOvraMailType QDCALL GetMailType() override { return mailType_; }
  /// By the name of the scanned file: in_*.inp, out_*.inp, anything else is an attachment file.
  TOvraMailFileType QDCALL GetFileType() override;
  /// Raises what the load of the mail raises.
  TRef<IMail> QDCALL GetMail() override;
  AnsiString QDCALL GetQuardaPath() override { return environment_.baseFolder; }
  TRef<IQuardaApp> QDCALL GetApp() override;
  void QDCALL Log(IPlugin* plugin, int32_t priority, const AnsiString& message) override;
  void QDCALL LogError(IPlugin* plugin, const AnsiString& message) override;
  void QDCALL LogWarn(IPlugin* plugin, const AnsiString& message) override;
  void QDCALL LogExtra(IPlugin* plugin, const AnsiString& message) override;
  void QDCALL LogOK(IPlugin* plugin, const AnsiString& message) override;
  void QDCALL LogDebug(IPlugin* plugin, const AnsiString& message) override;
  void QDCALL VirusReason(IPlugin* plugin, const AnsiString& message) override;
  TRef<IStringList> QDCALL NewStringList() override;
  TRef<IMail> QDCALL LoadMailFromMemory(const char* data, int32_t size) override;
  TRef<IMail> QDCALL LoadMailFromFile(const AnsiString& fileName) override;
  void QDCALL SetGlobalData(const AnsiString& name, const AnsiString& value) override;
  AnsiString QDCALL GetGlobalData(const AnsiString& name) override;

  bool QDCALL Initialize() override;
  bool QDCALL Execute() override;
  bool QDCALL AddRedAlertFile() override;
  void QDCALL WriteStatistic(bool redAlert, int32_t exitCode) override;

  /// Gives up what can be read again from the mail's file: a scan inside this one needs the memory.
  void ReleaseMemory() { mail_.ReleaseBodies(); }

 private:
  /// Which plug-ins of the list take no part in this scan, by index.
  using TInactive = std::vector<bool>;
  /// The plug-in whose result the others are asked about.
  struct TExecuted {
    IPlugin* plugin;
    int32_t index;
  };

  void RememberMailType();
  TMailTypeRecord MailAround();
  bool IsExcludedDirection();
  bool IsSoleInstance();
  TInactive InitPlugins(IPluginList& plugins);
  bool ExecutePlugins(IPluginList& plugins, const TInactive& inactive);
  bool ConfirmedResult(IPluginList& plugins, const TInactive& inactive, const TExecuted& executed,
                       bool result);
  void FinishPlugins(IPluginList& plugins, const TInactive& inactive, bool result);
  void WriteBack();
  void TidyUp() noexcept;
  bool KeepsBodies();

  TEngineEnvironment environment_;
  TQuardaInstance* const outer_;  // null for the outermost
  TMailTypeRecord own_;           // of this scan
  TMailTypeRecord inner_;         // of the last mail scanned right inside this one
  TMail mail_;
  TRef<IMail> mailInterface_;  // over mail_, borrowing it
  std::string pendingMail_;    // the mail file still to be loaded
  TRef<IArguments> arguments_;
  TStringList globalData_;
  TOvraMailType mailType_ = mtUnknown;
  TEngineLog log_;
};

}  // namespace quarda
