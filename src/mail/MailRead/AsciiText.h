// Comparing and trimming of names in ASCII.
#pragma once

#include <cstddef>
#include <string_view>

namespace quarda {

constexpr char LowerAscii(char c) noexcept {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

/// Whether the texts are equal without regard to ASCII letter case.
inline bool SameAscii(std::string_view a, std::string_view b) noexcept {
  if (a.size() != b.size()) return false;
  if (a == b) return true;  // the usual case, compared by the word
  for (size_t i = 0; i < a.size(); ++i) {
    if (a[i] != b[i] && LowerAscii(a[i]) != LowerAscii(b[i])) return false;
  }
  return true;
}

/// The text without leading and trailing blanks and control characters.
inline std::string_view TrimmedText(std::string_view text) noexcept {
  const auto blank = [](char c) { return static_cast<unsigned char>(c) <= ' '; };
  while (!text.empty() && blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && blank(text.back())) text.remove_suffix(1);
  return text;
}

}  // namespace quarda
