// Encoded words in header values: what is written is read back, and no value grows.
#include <Encodings.h>

#include "Fuzz.h"

namespace {

using namespace quarda;

// Whether the value comes back: a NUL or an end mark inside would end its word early.
bool IsReadBack(std::string_view value, std::string_view encoded) {
  if (encoded == value) return value.find("=?") == value.npos;
  // Escaping leaves "?" alone and makes "=" of other characters.
  return value.find('\0') == value.npos && encoded.find("?=", 15) == encoded.size() - 2;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return fuzz::AllowErrors([&] {
    const std::string_view value = fuzz::AsText(data, size);
    const std::string decoded = DecodeHeader(value);
    fuzz::Require(decoded.size() <= value.size(), "grows");
    fuzz::Require(value.find("=?") != value.npos || decoded == value, "plain value changes");
    const std::string encoded = EncodeHeader(value);
    if (IsReadBack(value, encoded)) fuzz::Require(DecodeHeader(encoded) == value, "round trip");
    const std::string word = "=?x?b?" + TextEncode(value, meBase64) + "?=";
    fuzz::Require(DecodeHeader(word) == value, "base64 word");
  });
}
