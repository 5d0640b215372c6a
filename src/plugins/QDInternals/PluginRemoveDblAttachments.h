// The plug-in "RemoveDblAttachments": takes copies of attachments out of a mail that carries many.
#pragma once

#include <QDPlugin.h>

namespace quarda {

/// Does its work in `Init`, before any check looks at the attachments, and takes no further part in
/// the scan.
class TPluginRemoveDblAttachments final : public TPlugin {
 public:
  TPluginRemoveDblAttachments() : TPlugin("RemoveDblAttachments", 1, 0) {}

  bool QDCALL Init(IQuardaInstance* instance) override;

 protected:
  bool DoExecute(IQuardaInstance&) override { return true; }

 private:
  void RemoveCopies(IQuardaInstance& instance, IMail& mail);
};

}  // namespace quarda
