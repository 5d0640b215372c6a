// The plug-in "ExtractEml": scans the mails and containers that are attached to a mail.
#pragma once

#include <QDPlugin.h>

#include <string>

namespace quarda {

class TMailTypeAside;
class TMemoryStream;
class TNestedMail;

/// Every embedded mail, and every file in it or in a container, gets a scan of its own in this
/// process. What such a scan changes in an embedded mail goes back into the attachment.
///
/// Nested scans go at most 100 deep, and the mails open inside each other take at most 64 MB, or
/// ten times the size of the outermost. What lies deeper, is larger, or finds no memory is not
/// opened: the mail is refused, and every scan around it names that as its reason.
class TPluginExtractEml final : public TPlugin {
 public:
  TPluginExtractEml() : TPlugin("ExtractEml", 1, 0) {}

 protected:
  bool DoExecute(IQuardaInstance& instance) override;

 private:
  // True: passed.
  bool CheckAttachment(IQuardaInstance& instance, IMailAttachment& attachment,
                       TMailTypeAside& mailType);
  bool CheckMail(IQuardaInstance& instance, IMailAttachment& attachment, const AnsiString& name,
                 TMailTypeAside& mailType);
  bool CheckContainer(IQuardaInstance& instance, IMailAttachment& attachment,
                      const AnsiString& name);

  // True: a virus was found.
  bool ScanMail(IQuardaInstance& instance, IMailAttachment& attachment, TMemoryStream content,
                TMailTypeAside& mailType);
  bool ScanMailFile(IQuardaInstance& instance, TNestedMail& mail);
  bool ScanAttachmentsOf(IQuardaInstance& instance, const std::string& mailFile);
  bool ScanContainer(IQuardaInstance& instance, TMemoryStream content);
  bool ScanFile(IQuardaInstance& instance, const std::string& path);

  void TakeOverChange(IQuardaInstance& instance, TNestedMail& mail);
  bool Refuse(IQuardaInstance& instance, std::string_view reason, std::string_view name);
  bool RefuseIfOutOfMemory(IQuardaInstance& instance, std::string_view name);
};

}  // namespace quarda
