// The plug-in "ScannedText": puts a notice into outgoing mails that passed the scan.
#pragma once

#include <Clock.h>
#include <QDPlugin.h>

namespace quarda {

/// Borrows the clock.
class TPluginScannedText final : public TPlugin {
 public:
  explicit TPluginScannedText(const platform::TClock& clock = platform::SystemClock())
      : TPlugin("ScannedText", 1, 0), clock_(clock) {}

  void QDCALL Done(IQuardaInstance* instance, bool passed) override;

 protected:
  bool DoExecute(IQuardaInstance&) override { return true; }

 private:
  bool IsWanted(IQuardaInstance& instance, IConfig& config);

  const platform::TClock& clock_;
};

}  // namespace quarda
