#include "MailPartAdapter.h"

#include <Errors.h>
#include <QDStringsAdapters.h>

#include <utility>
#include <vector>

#include "HeaderAdapters.h"
#include "QDMailAdapters.h"

namespace quarda {
namespace {

static_assert(int{eCurrent} == int{mail::eCurrent} && int{e8bit} == int{mail::e8bit} &&
              int{e7bit} == int{mail::e7bit} &&
              int{eQuotedPrintable} == int{mail::eQuotedPrintable} &&
              int{eBase64} == int{mail::eBase64} && int{eUUE} == int{mail::eUUE} &&
              int{eUnknown} == int{mail::eUnknown});

TRef<TMailPartAdapter> PartAdapter(TMailPart& part) { return MakeRef<TMailPartAdapter>(part); }

// A part can be reached as IMailPart in two ways; the one by IMail is the object's identity.
TRef<IMailPart> AsPart(const TRef<TMailPartAdapter>& adapter) {
  return TRef<IMailPart>(static_cast<IMail*>(adapter.Get()));
}

// A part that is to be copied, and where its parent stands in the list.
struct TSourcePart {
  TRef<IMailPart> part;
  size_t parent = 0;
};

// The part and all below it, parents first. What is added below it later is not among them: a part
// can be given a copy of the part that it belongs to.
std::vector<TSourcePart> PartsOf(IMailPart* root) {
  std::vector<TSourcePart> parts{{TRef<IMailPart>(root)}};
  for (size_t i = 0; i < parts.size(); ++i) {
    const int32_t count = parts[i].part->GetCount();
    for (int32_t child = 0; child < count; ++child) {
      parts.push_back({parts[i].part->GetParts(child), i});
    }
  }
  return parts;
}

TMail* MailOf(TMailPart& part) noexcept {
  TMail* const mail = part.GetMail();
  return mail == &part ? mail : nullptr;
}

// What a plug-in cannot be told in 32 bits, it cannot be given.
uint32_t ToSize(size_t size) {
  if (size > UINT32_MAX) throw EError("The content is too large.");
  return static_cast<uint32_t>(size);
}

using TReadList = void (TMail::*)(TStringList& list) const;
using TWriteList = void (TMail::*)(const TStringList& list);

TRef<IStringList> ReadList(TMail* mail, TReadList read) {
  if (!mail) return {};
  auto list = std::make_unique<TStringList>();
  (mail->*read)(*list);
  return StringListAdapterOwned(std::move(list));
}

void WriteList(TMail* mail, TWriteList write, IStringList* list) {
  if (!mail) return;
  const std::unique_ptr<TStringList> copy = IStringListToStrings(list);
  (mail->*write)(copy ? *copy : TStringList());
}

}  // namespace

TRef<IMail> MailAdapter(TMail& mail) { return PartAdapter(mail); }

TRef<IMail> MailAdapterOwned(std::unique_ptr<TMail> mail) {
  return MakeRef<TMailPartAdapter>(std::move(mail));
}

TMailPartAdapter::TMailPartAdapter(TMailPart& part) noexcept : part_(part), mail_(MailOf(part)) {}

TMailPartAdapter::TMailPartAdapter(std::unique_ptr<TMail> mail) noexcept
    : owned_(std::move(mail)), part_(*owned_), mail_(owned_.get()) {}

TRef<IHeader> TMailPartAdapter::GetHeader() {
  if (!header_) header_ = MakeRef<THeaderAdapter>(part_.GetHeader());
  return header_;
}

TRef<IStringList> TMailPartAdapter::GetBody() {
  const std::shared_ptr<TStringList> lines = part_.ShareBody();
  if (!body_) body_ = StringListAdapterOwned(lines);
  return body_;
}

AnsiString TMailPartAdapter::GetContentTypeType() { return part_.GetContentTypeType(); }

void TMailPartAdapter::SetContentTypeType(const AnsiString& value) {
  part_.SetContentTypeType(value);
}

AnsiString TMailPartAdapter::GetContentTypeSubType() { return part_.GetContentTypeSubType(); }

void TMailPartAdapter::SetContentTypeSubType(const AnsiString& value) {
  part_.SetContentTypeSubType(value);
}

AnsiString TMailPartAdapter::GetContentType() { return part_.GetContentType(); }

void TMailPartAdapter::SetContentType(const AnsiString& value) { part_.SetContentType(value); }

AnsiString TMailPartAdapter::GetContentTransferEncoding() {
  return part_.GetContentTransferEncoding();
}

void TMailPartAdapter::SetContentTransferEncoding(const AnsiString& value) {
  part_.SetContentTransferEncoding(value);
}

TEncodeType TMailPartAdapter::GetEncodeType() {
  return static_cast<TEncodeType>(part_.GetEncodeType());
}

bool TMailPartAdapter::GetMultipartSection() { return part_.GetMultipartSection(); }

void TMailPartAdapter::SetMultipartSection(bool value) { part_.SetMultipartSection(value); }

AnsiString TMailPartAdapter::GetBoundary() { return part_.GetBoundary(); }

void TMailPartAdapter::SetBoundary(const AnsiString& value) { part_.SetBoundary(value); }

int32_t TMailPartAdapter::GetCount() { return static_cast<int32_t>(part_.GetCount()); }

TRef<IMailPart> TMailPartAdapter::GetParts(int32_t index) {
  return AsPart(PartAdapter(part_.GetParts(static_cast<size_t>(index))));
}

TRef<IMailPart> TMailPartAdapter::GetOwner() {
  TMailPart* const owner = part_.GetParent();
  return owner ? AsPart(PartAdapter(*owner)) : nullptr;
}

// What is left of the part before another one is copied into it. Fields and lines that nobody was
// given are replaced by the copy anyway.
void TMailPartAdapter::Empty() {
  part_.Clear();
  if (header_) header_->Clear();
  if (body_) body_->Clear();
}

void TMailPartAdapter::Assign(IMailPart* source) {
  Empty();
  if (!source) return;
  part_.DropBody();  // it need not be read only to be replaced
  const std::vector<TSourcePart> parts = PartsOf(source);
  std::vector<TRef<IMailPart>> copies;
  copies.reserve(parts.size());
  for (const TSourcePart& from : parts) {
    copies.push_back(copies.empty() ? TRef<IMailPart>(static_cast<IMail*>(this))
                                    : copies[from.parent]->Add());
    copies.back()->GetHeader()->Assign(from.part->GetHeader().Get());
    copies.back()->GetBody()->Assign(from.part->GetBody().Get());
  }
}

TRef<IMailPart> TMailPartAdapter::Add() { return AsPart(PartAdapter(part_.Add())); }

void TMailPartAdapter::Delete(int32_t index) { part_.Delete(static_cast<size_t>(index)); }

void TMailPartAdapter::Move(int32_t currentIndex, int32_t newIndex) {
  part_.Move(static_cast<size_t>(currentIndex), static_cast<size_t>(newIndex));
}

void TMailPartAdapter::Exchange(int32_t index1, int32_t index2) {
  part_.Exchange(static_cast<size_t>(index1), static_cast<size_t>(index2));
}

void TMailPartAdapter::Clear() { part_.Clear(); }

bool TMailPartAdapter::IsAttachment() { return part_.IsAttachment(); }

bool TMailPartAdapter::IsText() { return part_.IsText(); }

uint32_t TMailPartAdapter::GetFileContent(void* buffer) {
  return ToSize(part_.GetFileContent(buffer));
}

uint32_t TMailPartAdapter::DecodedContent(void* buffer) {
  return ToSize(part_.DecodedContent(buffer));
}

void TMailPartAdapter::SetContent(TEncodeType encoding, const void* data, uint32_t size) {
  part_.SetContent(static_cast<mail::TEncodeType>(encoding), data, size);
}

AnsiString TMailPartAdapter::GetText() { return part_.DecodedContent(); }

void TMailPartAdapter::SetText(const AnsiString& text) {
  part_.SetContent(mail::eCurrent, text.View());
}

AnsiString TMailPartAdapter::GetContentID() { return part_.GetContentID(); }

void TMailPartAdapter::SetContentID(const AnsiString& value) { part_.SetContentID(value); }

AnsiString TMailPartAdapter::GetName() { return part_.GetName(); }

void TMailPartAdapter::SetName(const AnsiString& value) { part_.SetName(value); }

AnsiString TMailPartAdapter::GetFileName() {
  const std::string name = part_.GetFileName();
  return name.empty() ? part_.GetName() : name;
}

void TMailPartAdapter::SetFileName(const AnsiString& value) { part_.SetFileName(value); }

AnsiString TMailPartAdapter::GetMailFileName() {
  return mail_ ? AnsiString(mail_->GetMailFileName()) : AnsiString();
}

int32_t TMailPartAdapter::GetAttachmentCount() {
  return mail_ ? static_cast<int32_t>(mail_->GetAttachmentCount()) : 0;
}

int32_t TMailPartAdapter::GetTextCount() {
  return mail_ ? static_cast<int32_t>(mail_->GetTextCount()) : 0;
}

TRef<IMailAttachment> TMailPartAdapter::GetAttachments(int32_t index) {
  if (!mail_) return {};
  return PartAdapter(mail_->GetAttachments(static_cast<size_t>(index)));
}

TRef<IMailText> TMailPartAdapter::GetTexts(int32_t index) {
  if (!mail_) return {};
  return PartAdapter(mail_->GetTexts(static_cast<size_t>(index)));
}

AnsiString TMailPartAdapter::GetSubject() {
  return mail_ ? AnsiString(mail_->GetSubject()) : AnsiString();
}

void TMailPartAdapter::SetSubject(const AnsiString& value) {
  if (mail_) mail_->SetSubject(value);
}

AnsiString TMailPartAdapter::GetFrom() {
  return mail_ ? AnsiString(mail_->GetFrom()) : AnsiString();
}

void TMailPartAdapter::SetFrom(const AnsiString& value) {
  if (mail_) mail_->SetFrom(value);
}

AnsiString TMailPartAdapter::GetTo() { return mail_ ? AnsiString(mail_->GetTo()) : AnsiString(); }

void TMailPartAdapter::SetTo(const AnsiString& value) {
  if (mail_) mail_->SetTo(value);
}

AnsiString TMailPartAdapter::GetCc() { return mail_ ? AnsiString(mail_->GetCc()) : AnsiString(); }

void TMailPartAdapter::SetCc(const AnsiString& value) {
  if (mail_) mail_->SetCc(value);
}

AnsiString TMailPartAdapter::GetBcc() { return mail_ ? AnsiString(mail_->GetBcc()) : AnsiString(); }

void TMailPartAdapter::SetBcc(const AnsiString& value) {
  if (mail_) mail_->SetBcc(value);
}

AnsiString TMailPartAdapter::GetDate() {
  return mail_ ? AnsiString(mail_->GetDate()) : AnsiString();
}

void TMailPartAdapter::SetDate(const AnsiString& value) {
  if (mail_) mail_->SetDate(value);
}

AnsiString TMailPartAdapter::GetMIMEVersion() {
  return mail_ ? AnsiString(mail_->GetMIMEVersion()) : AnsiString();
}

void TMailPartAdapter::SetMimeVersion(const AnsiString& value) {
  if (mail_) mail_->SetMIMEVersion(value);
}

AnsiString TMailPartAdapter::GetReturnPath() {
  return mail_ ? AnsiString(mail_->GetReturnPath()) : AnsiString();
}

AnsiString TMailPartAdapter::GetMessageID() {
  return mail_ ? AnsiString(mail_->GetMessageID()) : AnsiString();
}

void TMailPartAdapter::Save() {
  if (mail_ && mail_->GetModified()) mail_->SaveToFile(mail_->GetMailFileName());
}

void TMailPartAdapter::SaveToFile(const AnsiString& fileName) {
  if (mail_) mail_->SaveToFile(fileName);
}

void TMailPartAdapter::Reset() {
  if (mail_) mail_->LoadFromFile(std::string(mail_->GetMailFileName()));
}

void TMailPartAdapter::DeleteAttachment(int32_t index) {
  if (mail_) mail_->DeleteAttachment(mail_->GetAttachments(static_cast<size_t>(index)));
}

void TMailPartAdapter::DeleteText(int32_t index) {
  if (mail_) mail_->DeleteText(mail_->GetTexts(static_cast<size_t>(index)));
}

TRef<IStringList> TMailPartAdapter::GetToList() { return ReadList(mail_, &TMail::GetToList); }

TRef<IStringList> TMailPartAdapter::GetCcList() { return ReadList(mail_, &TMail::GetCcList); }

TRef<IStringList> TMailPartAdapter::GetBccList() { return ReadList(mail_, &TMail::GetBccList); }

void TMailPartAdapter::SetToList(IStringList* list) { WriteList(mail_, &TMail::SetToList, list); }

void TMailPartAdapter::SetCcList(IStringList* list) { WriteList(mail_, &TMail::SetCcList, list); }

void TMailPartAdapter::SetBccList(IStringList* list) { WriteList(mail_, &TMail::SetBccList, list); }

AnsiString TMailPartAdapter::ExtractEmailAddress(const AnsiString& text) {
  return HeaderEmailToAddress(text);
}

void TMailPartAdapter::ExtractEmailAddresses(IStringList* list) {
  if (!mail_ || !list) return;
  const int32_t count = list->GetCount();
  for (int32_t i = 0; i < count; ++i) {
    list->SetStrings(i, HeaderEmailToAddress(list->GetStrings(i)));
  }
}

}  // namespace quarda
