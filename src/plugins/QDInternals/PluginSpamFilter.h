// The plug-in "SpamFilter": has incoming mails judged by external spam filters.
#pragma once

#include <QDPlugin.h>

namespace quarda {

class TPluginSpamFilter final : public TPlugin {
 public:
  TPluginSpamFilter() : TPlugin("SpamFilter", 1, 0) {}

 protected:
  bool DoExecute(IQuardaInstance& instance) override;

 private:
  bool HandleSpam(IQuardaInstance& instance, IConfig& config);
};

}  // namespace quarda
