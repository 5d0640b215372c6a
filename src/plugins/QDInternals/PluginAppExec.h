// The plug-in "AppExec": runs the administrator's own programs before, during and after a scan.
#pragma once

#include <QDPlugin.h>

#include <string_view>
#include <utility>
#include <vector>

namespace quarda {

/// A program that fails, or cannot be started, is logged and never changes the verdict.
class TPluginAppExec final : public TPlugin {
 public:
  TPluginAppExec() : TPlugin("AppExec", 1, 0) {}

  bool QDCALL Init(IQuardaInstance* instance) override;
  void QDCALL Done(IQuardaInstance* instance, bool passed) override;

 protected:
  bool DoExecute(IQuardaInstance& instance) override;

 private:
  /// Of the scans that are running: a nested scan has its own. The scan is not held; it is only
  /// compared, for one that broke off leaves its file behind.
  using TOpenFile = std::pair<const IQuardaInstance*, TRef<IConfigFile>>;

  void StartApps(IQuardaInstance& instance, std::string_view section);
  void Close(const IQuardaInstance& instance);

  std::vector<TOpenFile> files_;
};

}  // namespace quarda
