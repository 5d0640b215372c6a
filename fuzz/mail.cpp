// Whole mails: loaded from every kind of source, decoded, edited, written and loaded again.
#include <MailRead.h>
#include <Streams.h>

#include <algorithm>
#include <string>
#include <vector>

#include "Fuzz.h"

namespace {

using namespace quarda;

// A stream that must be read in blocks.
class TBlockStream final : public TStream {
 public:
  explicit TBlockStream(std::string_view text) : memory_(text) {}
  size_t Read(void* buffer, size_t size) override { return memory_.Read(buffer, size); }
  void Write(const void* data, size_t size) override { memory_.Write(data, size); }
  uint64_t Position() const override { return memory_.Position(); }
  void SetPosition(uint64_t position) override { memory_.SetPosition(position); }
  uint64_t Size() const override { return memory_.Size(); }
  void SetSize(uint64_t size) override { memory_.SetSize(size); }

 private:
  TMemoryStream memory_;
};

std::vector<TMailPart*> AllParts(TMail& mail) {
  std::vector<TMailPart*> parts{&mail};
  for (size_t i = 0; i < parts.size(); ++i) {
    TMailPart& part = *parts[i];
    for (size_t k = 0; k < part.GetCount(); ++k) parts.push_back(&part.GetParts(k));
  }
  return parts;
}

std::string Saved(TMail& mail) {
  std::string text;
  TStringStream stream(text);
  mail.SaveToStream(stream);
  return text;
}

std::string Rewritten(std::string_view text) {
  TMail mail;
  TMemoryStream stream(text);
  mail.LoadFromStream(stream);
  return Saved(mail);
}

void Decode(TMailPart& part) {
  try {
    std::string buffer(part.DecodedContent(nullptr), '\0');
    const size_t size = part.DecodedContent(buffer.data());
    fuzz::Require(size <= buffer.size(), "decoded more than announced");
    fuzz::Require(part.DecodedContent() == buffer.substr(0, size), "two ways to decode");
  } catch (const EMailDecodeError&) {
  }
}

std::vector<TMailPart*> Listed(const TMail& mail) {
  std::vector<TMailPart*> parts;
  for (size_t i = 0; i < mail.GetAttachmentCount(); ++i) parts.push_back(&mail.GetAttachments(i));
  parts.push_back(nullptr);
  for (size_t i = 0; i < mail.GetTextCount(); ++i) parts.push_back(&mail.GetTexts(i));
  return parts;
}

// Control characters at the ends of values are trimmed one value with each reading, and each of
// several boundaries of a part without children closes that part once.
bool ComesToRest(TMail& saved, std::string_view text) {
  for (const TMailPart* part : AllParts(saved)) {
    if (part->GetCount() == 0 && !part->GetBoundary().empty()) return false;
  }
  return std::ranges::none_of(
      text, [](char c) { return static_cast<unsigned char>(c) < ' ' && c != '\n'; });
}

void EditOne(TMail& mail, uint8_t what, uint8_t which) {
  const std::vector<TMailPart*> parts = AllParts(mail);
  TMailPart& part = *parts[which % parts.size()];
  const size_t count = part.GetCount();
  const int step = what % 10;
  if (step == 0) part.SetContentType(what & 128 ? "image/gif" : "text/x");
  if (step == 1) part.SetFileName(what & 128 ? "" : "f");
  if (step == 2) part.GetHeader().Clear();
  if (step == 3) part.Add().GetHeader().Add("Content-Type", "a/b");
  if (step == 4 && count > 0) part.Delete(what % count);
  if (step == 5 && count > 0) part.Move(0, count - 1);
  if (step == 6) part.SetContent(mail::eBase64, part.GetFileContent());
  if (step == 7 && parts.size() < 40) part.Assign(*parts[what % parts.size()]);
  if (step == 8 && &part != &mail) mail.DeleteAttachment(part);
  if (step == 9) part.GetHeader().SetHeaderStr("Content-Disposition", "attachment");
}

}  // namespace

// The last bytes of the input say how to edit what the others hold.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view text = fuzz::AsText(data, size);
  return fuzz::AllowErrors([&] {
    TMail mail;
    TMemoryStream stream(text);
    mail.LoadFromStream(stream);
    TMail fromBlocks;
    TBlockStream blocks(text);
    fromBlocks.LoadFromStream(blocks);
    TMail copy;
    copy.Assign(mail);
    for (TMailPart* const part : AllParts(mail)) Decode(*part);
    const std::string once = Saved(mail);
    fuzz::Require(once == Saved(fromBlocks), "memory and blocks");
    fuzz::Require(AllParts(copy).size() == AllParts(mail).size(), "a copy has all parts");
    if (ComesToRest(mail, text)) {
      const std::string twice = Rewritten(once);
      fuzz::Require(Rewritten(twice) == twice, "a fixed point");
    }
    for (size_t i = 0; i + 1 < std::min<size_t>(size, 16); i += 2) {
      EditOne(mail, data[size - 1 - i], data[size - 2 - i]);
    }
    mail.MailPartModified();
    const auto listed = Listed(mail);
    mail.UpdateMailPartList();
    fuzz::Require(listed == Listed(mail), "lists that followed every change");
    Rewritten(Saved(mail));
  });
}
