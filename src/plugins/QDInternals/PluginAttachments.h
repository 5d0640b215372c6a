// The plug-in "Attachments": judges a mail by the file names of its attachments.
#pragma once

#include <QDPlugin.h>

namespace quarda {

class TPluginAttachments final : public TPlugin {
 public:
  TPluginAttachments() : TPlugin("Attachments", 1, 0) {}

 protected:
  bool DoExecute(IQuardaInstance& instance) override;
};

}  // namespace quarda
