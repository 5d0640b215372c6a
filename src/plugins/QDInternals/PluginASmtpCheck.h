// The plug-in "ASmtpCheck": an address of the own domain may come in by authenticated SMTP only.
#pragma once

#include <QDPlugin.h>

namespace quarda {

class TPluginASmtpCheck final : public TPlugin {
 public:
  TPluginASmtpCheck() : TPlugin("ASmtpCheck", 1, 0) {}

 protected:
  bool DoExecute(IQuardaInstance& instance) override;
};

}  // namespace quarda
