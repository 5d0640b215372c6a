// The plug-in "text/html": makes the HTML of a mail harmless before a reader sees it.
#pragma once

#include <QDPlugin.h>

namespace quarda {

class TPluginTextHtml final : public TPlugin {
 public:
  TPluginTextHtml() : TPlugin("text/html", 1, 0) {}

  /// The pass over the inline frames; false: virus.
  bool CheckIFrames(IQuardaInstance& instance);

 protected:
  bool DoExecute(IQuardaInstance& instance) override;

 private:
  void MakePlainText(IQuardaInstance& instance, IMail& mail);
  void NeutraliseParts(IQuardaInstance& instance, IMail& mail, IConfig& config);
  void NeutralisePart(IQuardaInstance& instance, IMailPart& part, bool alwaysRemoveScripts);
  bool CheckPage(IQuardaInstance& instance, IMailText& part, TIFrameBlockMode mode);
};

}  // namespace quarda
