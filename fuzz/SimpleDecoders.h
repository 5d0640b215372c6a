// Decoders that follow the rules of their encodings character by character: the judges of the fast
// ones.
#pragma once

#include <MailTypes.h>

#include <cstdlib>
#include <string>
#include <string_view>

namespace quarda::simple {

inline std::string Alphabet(TMailEncodingType encoding) {
  std::string upper, lower, digits;
  for (char c = 'A'; c <= 'Z'; ++c) upper += c;
  for (char c = 'a'; c <= 'z'; ++c) lower += c;
  for (char c = '0'; c <= '9'; ++c) digits += c;
  if (encoding == meBase64) return upper + lower + digits + "+/";
  if (encoding == meXX) return "+-" + digits + upper + lower;
  std::string alphabet(1, '\x60');
  for (char c = 33; c <= 95; ++c) alphabet += c;
  return alphabet;
}

inline std::string Decode(std::string_view text, TMailEncodingType encoding) {
  const std::string alphabet = Alphabet(encoding);
  std::string bytes;
  unsigned bits = 0;
  for (size_t i = 0; i < text.size() / 4 * 4; ++i) {
    const size_t value = alphabet.find(text[i]);
    bits = bits << 6 | (value == alphabet.npos ? 0 : static_cast<unsigned>(value));
    if (i % 4 != 3) continue;
    for (int shift = 16; shift >= 0; shift -= 8) bytes += static_cast<char>(bits >> shift & 255);
    bits = 0;
  }
  if (bytes.empty() || text.back() != '=') return bytes;
  bytes.pop_back();
  if (text[text.size() - 2] == '=') bytes.pop_back();
  return bytes;
}

inline std::string DecodeQuoted(std::string_view text, bool headerMode) {
  constexpr std::string_view kDigits = "0123456789ABCDEFabcdef";
  const auto at = [&](size_t i) { return i < text.size() ? text[i] : '\0'; };
  const auto is = [](char c, std::string_view set) { return set.find(c) != set.npos; };
  std::string decoded;
  for (size_t i = 0; at(i) != '\0';) {
    if (at(i) == '=' && is(at(i + 1), kDigits) && is(at(i + 2), kDigits)) {
      const char digits[] = {at(i + 1), at(i + 2), '\0'};
      decoded += static_cast<char>(std::strtol(digits, nullptr, 16));
      i += 3;
    } else if (at(i) == '=' && is(at(i + 1), "\n\r ")) {
      for (i += 2; is(at(i), "\r\n=");) ++i;
    } else {
      decoded += headerMode && at(i) == '_' ? ' ' : at(i);
      ++i;
    }
  }
  return decoded;
}

}  // namespace quarda::simple
