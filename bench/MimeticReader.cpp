#include "Readers.h"

#ifdef QD_BENCH_MIMETIC

#include <mimetic/mimetic.h>

#include <iterator>

namespace quarda::bench {

namespace {

std::string Decoded(mimetic::MimeEntity& part) {
  std::string result;
  const std::string& body = part.body();
  result.reserve(body.size());
  const auto out = std::back_inserter(result);
  const std::string mechanism = part.header().contentTransferEncoding().mechanism();
  if (mechanism == "base64") {
    mimetic::Base64::Decoder decoder;
    mimetic::decode(body.begin(), body.end(), decoder, out);
  } else if (mechanism == "quoted-printable") {
    mimetic::QP::Decoder decoder;
    mimetic::decode(body.begin(), body.end(), decoder, out);
  } else {
    result = body;
  }
  return result;
}

template <class Visit>
void Walk(mimetic::MimeEntity& part, const Visit& visit) {
  visit(part);
  for (mimetic::MimeEntity* child : part.body().parts()) Walk(*child, visit);
}

class TMimeticReader : public TReader {
 public:
  explicit TMimeticReader(const std::vector<std::string>& mails) : mails_(mails) {}

  size_t Count() const override { return mails_.size(); }

  size_t Load(size_t mail) const override {
    size_t parts = 0;
    Visit(mail, [&](mimetic::MimeEntity&) { ++parts; });
    return parts;
  }

  size_t LoadAndDecode(size_t mail) const override {
    size_t bytes = 0;
    Visit(mail, [&](mimetic::MimeEntity& part) {
      if (part.body().parts().empty()) bytes += Decoded(part).size();
    });
    return bytes;
  }

 private:
  template <class Visitor>
  void Visit(size_t index, const Visitor& visit) const {
    const std::string& mail = mails_[index];
    mimetic::MimeEntity entity(mail.data(), mail.data() + mail.size());
    Walk(entity, visit);
  }

  const std::vector<std::string>& mails_;
};

}  // namespace

std::unique_ptr<TReader> MimeticReader(const std::vector<std::string>& mails) {
  return std::make_unique<TMimeticReader>(mails);
}

}  // namespace quarda::bench

#else

namespace quarda::bench {

std::unique_ptr<TReader> MimeticReader(const std::vector<std::string>&) { return nullptr; }

}  // namespace quarda::bench

#endif
