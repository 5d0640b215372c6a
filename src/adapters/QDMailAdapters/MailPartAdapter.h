// Parts and mails as plug-ins see them.
#pragma once

#include <MailRead.h>
#include <QDIntf.h>

#include <cstdint>
#include <memory>

namespace quarda {

/// A part, or a whole mail, behind all four interfaces of the mail. On a part that is no mail the
/// getters of IMail return nothing and its other operations do nothing.
class TMailPartAdapter final
    : public TRefCountedObject<TInterfaces<IMail, IMailAttachment>, IMailPart, IMailText> {
 public:
  explicit TMailPartAdapter(TMailPart& part) noexcept;
  explicit TMailPartAdapter(std::unique_ptr<TMail> mail) noexcept;

  // IMailPart
  TRef<IHeader> QDCALL GetHeader() override;
  TRef<IStringList> QDCALL GetBody() override;
  AnsiString QDCALL GetContentTypeType() override;
  void QDCALL SetContentTypeType(const AnsiString& value) override;
  AnsiString QDCALL GetContentTypeSubType() override;
  void QDCALL SetContentTypeSubType(const AnsiString& value) override;
  AnsiString QDCALL GetContentType() override;
  void QDCALL SetContentType(const AnsiString& value) override;
  AnsiString QDCALL GetContentTransferEncoding() override;
  void QDCALL SetContentTransferEncoding(const AnsiString& value) override;
  TEncodeType QDCALL GetEncodeType() override;
  bool QDCALL GetMultipartSection() override;
  void QDCALL SetMultipartSection(bool value) override;
  AnsiString QDCALL GetBoundary() override;
  void QDCALL SetBoundary(const AnsiString& value) override;
  int32_t QDCALL GetCount() override;
  TRef<IMailPart> QDCALL GetParts(int32_t index) override;
  TRef<IMailPart> QDCALL GetOwner() override;
  void QDCALL Assign(IMailPart* source) override;
  TRef<IMailPart> QDCALL Add() override;
  void QDCALL Delete(int32_t index) override;
  void QDCALL Move(int32_t currentIndex, int32_t newIndex) override;
  void QDCALL Exchange(int32_t index1, int32_t index2) override;
  void QDCALL Clear() override;
  bool QDCALL IsAttachment() override;
  bool QDCALL IsText() override;
  uint32_t QDCALL GetFileContent(void* buffer) override;
  uint32_t QDCALL DecodedContent(void* buffer) override;
  void QDCALL SetContent(TEncodeType encoding, const void* data, uint32_t size) override;

  // IMailText
  AnsiString QDCALL GetText() override;
  void QDCALL SetText(const AnsiString& text) override;

  // IMailAttachment
  AnsiString QDCALL GetContentID() override;
  void QDCALL SetContentID(const AnsiString& value) override;
  AnsiString QDCALL GetName() override;
  void QDCALL SetName(const AnsiString& value) override;
  AnsiString QDCALL GetFileName() override;
  void QDCALL SetFileName(const AnsiString& value) override;

  // IMail
  AnsiString QDCALL GetMailFileName() override;
  int32_t QDCALL GetAttachmentCount() override;
  int32_t QDCALL GetTextCount() override;
  TRef<IMailAttachment> QDCALL GetAttachments(int32_t index) override;
  TRef<IMailText> QDCALL GetTexts(int32_t index) override;
  AnsiString QDCALL GetSubject() override;
  void QDCALL SetSubject(const AnsiString& value) override;
  AnsiString QDCALL GetFrom() override;
  void QDCALL SetFrom(const AnsiString& value) override;
  AnsiString QDCALL GetTo() override;
  void QDCALL SetTo(const AnsiString& value) override;
  AnsiString QDCALL GetCc() override;
  void QDCALL SetCc(const AnsiString& value) override;
  AnsiString QDCALL GetBcc() override;
  void QDCALL SetBcc(const AnsiString& value) override;
  AnsiString QDCALL GetDate() override;
  void QDCALL SetDate(const AnsiString& value) override;
  AnsiString QDCALL GetMIMEVersion() override;
  void QDCALL SetMimeVersion(const AnsiString& value) override;
  AnsiString QDCALL GetReturnPath() override;
  AnsiString QDCALL GetMessageID() override;
  void QDCALL Save() override;
  void QDCALL SaveToFile(const AnsiString& fileName) override;
  void QDCALL Reset() override;
  void QDCALL DeleteAttachment(int32_t index) override;
  void QDCALL DeleteText(int32_t index) override;
  TRef<IStringList> QDCALL GetToList() override;
  TRef<IStringList> QDCALL GetCcList() override;
  TRef<IStringList> QDCALL GetBccList() override;
  void QDCALL SetToList(IStringList* list) override;
  void QDCALL SetCcList(IStringList* list) override;
  void QDCALL SetBccList(IStringList* list) override;
  AnsiString QDCALL ExtractEmailAddress(const AnsiString& text) override;
  void QDCALL ExtractEmailAddresses(IStringList* list) override;

 private:
  void Empty();

  const std::unique_ptr<TMail> owned_;
  TMailPart& part_;
  TMail* const mail_;  // the same as part_ when that is a mail, else null
  TRef<IHeader> header_;
  TRef<IStringList> body_;
};

}  // namespace quarda
