// The plug-in "LoadPlugins": appends the external plug-ins that the settings name.
#pragma once

#include <QDPlugin.h>

namespace quarda {

/// Does its work in `Init` and takes no further part in the scan.
class TPluginLoadPlugins final : public TPlugin {
 public:
  TPluginLoadPlugins() : TPlugin("LoadPlugins", 1, 0) {}

  bool QDCALL Init(IQuardaInstance* instance) override;

 protected:
  bool DoExecute(IQuardaInstance&) override { return true; }
};

}  // namespace quarda
