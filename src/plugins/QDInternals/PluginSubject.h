// The plug-in "Subject": compares the subject of a mail with patterns.
#pragma once

#include <QDPlugin.h>

#include <string_view>

namespace quarda {

class TPluginSubject final : public TPlugin {
 public:
  TPluginSubject() : TPlugin("Subject", 1, 0) {}

 protected:
  bool DoExecute(IQuardaInstance& instance) override;

 private:
  void MarkAsVirus(IQuardaInstance& instance, std::string_view pattern);
  void NoteInSubject(IQuardaInstance& instance, IMail& mail, std::string_view subject);
};

}  // namespace quarda
