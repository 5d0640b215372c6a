// The plug-in "VirusScan": has the scanned file checked by external virus scanners.
#pragma once

#include <QDPlugin.h>

namespace quarda {

/// Whether the settings name any virus scanner.
bool VirusScannerConfigured(IConfig& config);

class TPluginVirusScan final : public TPlugin {
 public:
  TPluginVirusScan() : TPlugin("VirusScan", 1, 0) {}

 protected:
  bool DoExecute(IQuardaInstance& instance) override;

 private:
  bool PassesFileScanners(IQuardaInstance& instance, IConfig& config);
  bool PassesMailScanner(IQuardaInstance& instance, IConfig& config);
};

}  // namespace quarda
