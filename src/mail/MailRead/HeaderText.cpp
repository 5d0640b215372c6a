// Each character is looked at once: a span is left by a search for its end, and one without an end
// takes all the rest.
#include "HeaderText.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "AsciiText.h"
#include "LineScan.h"

namespace quarda {
namespace {

constexpr auto kSpecial = [] {
  std::array<bool, 256> special{};
  for (const char c : {';', '"', '<', '='}) special[static_cast<unsigned char>(c)] = true;
  return special;
}();

// Where the span that begins at `at` ends, or npos; `at` itself when none begins there.
size_t SpanEnd(std::string_view text, size_t at) noexcept {
  switch (text[at]) {
    case '"':
      return text.find('"', at + 1);
    case '<':
      return text.find('>', at + 1);
    default:
      if (text.substr(at, 2) != "=?") return at;
      // The question mark that opens a word may close it as well.
      const size_t close = text.find("?=", at + 1);
      return close == std::string_view::npos ? close : close + 1;
  }
}

size_t FindSemicolon(std::string_view text) noexcept {
  for (size_t i = 0; i < text.size(); ++i) {
    if (!kSpecial[static_cast<unsigned char>(text[i])]) continue;
    if (text[i] == ';') return i;
    i = SpanEnd(text, i);
    if (i == std::string_view::npos) break;
  }
  return text.size();
}

}  // namespace

bool TakeValueLine(std::string_view& rest, std::string_view& line) noexcept {
  while (!rest.empty()) {
    const size_t end = FindSemicolon(rest);
    line = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    while (!line.empty() && (line.front() == ' ' || line.front() == '\t')) line.remove_prefix(1);
    if (!line.empty()) return true;
  }
  return false;
}

std::string Unfold(std::string_view raw) {
  std::string value;
  value.reserve(raw.size());
  value = TrimmedText(TakeLine(raw));
  while (!raw.empty()) value.append(TakeLine(raw));
  return value;
}

}  // namespace quarda
