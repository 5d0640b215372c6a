#include "Readers.h"

#ifdef QD_BENCH_GMIME

#include <gmime/gmime.h>

#include <mutex>

namespace quarda::bench {

namespace {

void InitOnce() {
  static std::once_flag once;
  std::call_once(once, [] { g_mime_init(); });
}

void CountPart(GMimeObject*, GMimeObject*, gpointer count) { ++*static_cast<size_t*>(count); }

void DecodePart(GMimeObject*, GMimeObject* part, gpointer bytes) {
  if (!GMIME_IS_PART(part)) return;
  GMimeDataWrapper* content = g_mime_part_get_content(GMIME_PART(part));
  if (content == nullptr) return;
  GMimeStream* target = g_mime_stream_mem_new();
  g_mime_data_wrapper_write_to_stream(content, target);
  *static_cast<size_t*>(bytes) += static_cast<size_t>(g_mime_stream_length(target));
  g_object_unref(target);
}

class TGMimeReader : public TReader {
 public:
  explicit TGMimeReader(const std::vector<std::string>& mails) {
    InitOnce();
    for (const std::string& mail : mails) {
      GByteArray* bytes = g_byte_array_sized_new(static_cast<guint>(mail.size()));
      g_byte_array_append(bytes, reinterpret_cast<const guint8*>(mail.data()),
                          static_cast<guint>(mail.size()));
      mails_.push_back(bytes);
    }
  }
  TGMimeReader(const TGMimeReader&) = delete;
  ~TGMimeReader() override {
    for (GByteArray* bytes : mails_) g_byte_array_free(bytes, TRUE);
  }

  size_t Count() const override { return mails_.size(); }
  size_t Load(size_t mail) const override { return Visit(mail, CountPart); }
  size_t LoadAndDecode(size_t mail) const override { return Visit(mail, DecodePart); }

 private:
  size_t Visit(size_t index, GMimeObjectForeachFunc visit) const {
    GMimeStream* stream = g_mime_stream_mem_new_with_byte_array(mails_[index]);
    g_mime_stream_mem_set_owner(GMIME_STREAM_MEM(stream), FALSE);
    GMimeParser* parser = g_mime_parser_new_with_stream(stream);
    GMimeMessage* message = g_mime_parser_construct_message(parser, nullptr);
    size_t result = 0;
    if (message != nullptr) {
      g_mime_message_foreach(message, visit, &result);
      g_object_unref(message);
    }
    g_object_unref(parser);
    g_object_unref(stream);
    return result;
  }

  std::vector<GByteArray*> mails_;
};

size_t Decode(GMimeContentEncoding encoding, std::string_view text, char* target) {
  InitOnce();
  GMimeEncoding state;
  g_mime_encoding_init_decode(&state, encoding);
  return g_mime_encoding_step(&state, text.data(), text.size(), target);
}

}  // namespace

std::unique_ptr<TReader> GMimeReader(const std::vector<std::string>& mails) {
  return std::make_unique<TGMimeReader>(mails);
}

size_t GMimeDecodeBase64(std::string_view text, char* target) {
  return Decode(GMIME_CONTENT_ENCODING_BASE64, text, target);
}

size_t GMimeDecodeQuotedPrintable(std::string_view text, char* target) {
  return Decode(GMIME_CONTENT_ENCODING_QUOTEDPRINTABLE, text, target);
}

}  // namespace quarda::bench

#else

namespace quarda::bench {

std::unique_ptr<TReader> GMimeReader(const std::vector<std::string>&) { return nullptr; }
size_t GMimeDecodeBase64(std::string_view, char*) { return 0; }
size_t GMimeDecodeQuotedPrintable(std::string_view, char*) { return 0; }

}  // namespace quarda::bench

#endif
