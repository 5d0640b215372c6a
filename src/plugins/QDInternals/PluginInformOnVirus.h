// The plug-in "InformOnVirus": keeps the administrator's mail account informed of virus mails.
#pragma once

#include <QDPlugin.h>

#include <string>
#include <string_view>

namespace quarda {

struct TNumberedNames;

/// Every scan moves the quarantined files of the mail folder into the administrator's account. An
/// incoming virus mail is reported there, whole, and its file becomes a notice to its recipient. A
/// process killed at any moment leaves the virus mail, or the report, or both.
class TPluginInformOnVirus final : public TPlugin {
 public:
  TPluginInformOnVirus() : TPlugin("InformOnVirus", 1, 0) {}

  void QDCALL Done(IQuardaInstance* instance, bool passed) override;

  /// The folder of the account that holds a file named like the administrator's address; empty
  /// without one.
  std::string FindMailAdminDir(IQuardaInstance& instance);
  /// Registers a new mail file with the mail store: here, that it exists is enough.
  bool AddMailFileToMailDb(IQuardaInstance& instance, const std::string& fileName,
                           std::string_view text);

 protected:
  bool DoExecute(IQuardaInstance& instance) override;

 private:
  void MoveQuarantined(IQuardaInstance& instance);
  bool MoveToAdmin(IQuardaInstance& instance, const std::string& file, TNumberedNames& names);
  bool IsWanted(IQuardaInstance& instance);
  bool IsToAdmin(IQuardaInstance& instance, IMail& mail);
  void Inform(IQuardaInstance& instance, const std::string& adminDir);
  bool WriteReport(IQuardaInstance& instance, IMail& mail, const std::string& adminDir);
  std::string ReportText(IQuardaInstance& instance, IMail& mail);
};

}  // namespace quarda
