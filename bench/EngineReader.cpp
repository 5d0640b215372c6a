#include <MailRead.h>
#include <Utils.h>

#include <cstring>

#include "Readers.h"

namespace quarda::bench {

namespace {

class TEngineReader : public TReader {
 public:
  explicit TEngineReader(const std::vector<std::string>& mails) {
    for (const std::string& mail : mails) {
      TTextBlock block(mail.size());
      std::memcpy(block.Data(), mail.data(), mail.size());
      blocks_.push_back(block);
    }
  }

  size_t Count() const override { return blocks_.size(); }

  size_t Load(size_t index) const override {
    TMail mail;
    LoadInto(mail, index);
    size_t parts = 0;
    Visit(mail, [&](TMailPart&) { ++parts; });
    return parts;
  }

  size_t LoadAndDecode(size_t index) const override {
    TMail mail;
    LoadInto(mail, index);
    size_t bytes = 0;
    Visit(mail, [&](TMailPart& part) {
      if (part.GetCount() == 0) bytes += part.DecodedContent().size();
    });
    return bytes;
  }

 private:
  void LoadInto(TMail& mail, size_t index) const {
    TMemoryStream stream(blocks_[index]);
    mail.LoadFromStream(stream);
  }

  template <class Visitor>
  static void Visit(TMailPart& root, const Visitor& visit) {
    std::vector<TMailPart*> pending = {&root};
    while (!pending.empty()) {
      TMailPart& part = *pending.back();
      pending.pop_back();
      visit(part);
      for (size_t i = 0; i < part.GetCount(); ++i) pending.push_back(&part.GetParts(i));
    }
  }

  std::vector<TTextBlock> blocks_;
};

}  // namespace

std::unique_ptr<TReader> EngineReader(const std::vector<std::string>& mails) {
  return std::make_unique<TEngineReader>(mails);
}

size_t TReader::LoadAll() const {
  size_t parts = 0;
  for (size_t i = 0; i < Count(); ++i) parts += Load(i);
  return parts;
}

size_t TReader::LoadAndDecodeAll() const {
  size_t bytes = 0;
  for (size_t i = 0; i < Count(); ++i) bytes += LoadAndDecode(i);
  return bytes;
}

}  // namespace quarda::bench
