// Most of a mail is body, and only a line that begins with "--" can end a body. So the three
// characters LF, "-", "-" are searched in vectors, whatever the length of the lines.
#include "LineScan.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>

namespace quarda {
namespace {

constexpr size_t kWidth = 16;
using TBytes = signed char __attribute__((vector_size(kWidth)));

TBytes Load(const char* at) noexcept {
  TBytes bytes;
  std::memcpy(&bytes, at, kWidth);
  return bytes;
}

TBytes DashLines(const char* at) noexcept {
  return (Load(at) == '\n') & (Load(at + 1) == '-') & (Load(at + 2) == '-');
}

using TCounts = unsigned char __attribute__((vector_size(kWidth)));
using TWords = std::array<uint64_t, 2>;

bool Any(TBytes bytes) noexcept {
  const auto words = std::bit_cast<TWords>(bytes);
  return (words[0] | words[1]) != 0;
}

TBytes LineEnds(const char* at) noexcept { return Load(at) == '\n'; }

TBytes CrLfs(const char* at) noexcept { return (Load(at) == '\r') & (Load(at + 1) == '\n'); }

TBytes LineEndCharacters(const char* at) noexcept { return LineEnds(at) | CrLfs(at); }

// Whether a character from there on, in four vectors, is a dash: a line end with two of them behind
// it would show. Dashes are rare in most bodies, line ends are not.
bool HasDash(const char* at) noexcept {
  return Any((Load(at) == '-') | (Load(at + kWidth) == '-') | (Load(at + 2 * kWidth) == '-') |
             (Load(at + 3 * kWidth) == '-'));
}

// How many places match in that many vectors, at most 255: each lane counts its own in a byte.
template <TBytes (*Match)(const char*) noexcept>
size_t CountInSteps(const char*& at, size_t steps) noexcept {
  TCounts sums{};
  for (size_t i = 0; i < steps; ++i, at += kWidth) sums -= std::bit_cast<TCounts>(Match(at));
  size_t total = 0;
  for (const unsigned char sum : std::bit_cast<std::array<unsigned char, kWidth>>(sums)) {
    total += sum;
  }
  return total;
}

// Counts from the start of the text on, in whole vectors, each with `after` characters behind it;
// the rest is cut out.
template <TBytes (*Match)(const char*) noexcept>
size_t CountInVectors(std::string_view& text, size_t after) noexcept {
  const char* at = text.data();
  size_t vectors = text.size() < after ? 0 : (text.size() - after) / kWidth;
  size_t count = 0;
  while (vectors > 0) {
    const size_t steps = std::min<size_t>(vectors, 255);
    count += CountInSteps<Match>(at, steps);
    vectors -= steps;
  }
  text.remove_prefix(static_cast<size_t>(at - text.data()));
  return count;
}

size_t FindPlainly(std::string_view text, size_t from) noexcept {
  for (size_t i = from; i + 2 < text.size(); ++i) {
    if (text[i] == '\n' && text[i + 1] == '-' && text[i + 2] == '-') return i + 1;
  }
  return std::string_view::npos;
}

}  // namespace

size_t FindDashLine(std::string_view text) noexcept {
  constexpr size_t kStep = 4 * kWidth;
  size_t i = 0;
  while (text.size() - i >= kStep + 2) {
    const char* const at = text.data() + i;
    if (HasDash(at + 1) && Any(DashLines(at) | DashLines(at + kWidth) | DashLines(at + 2 * kWidth) |
                               DashLines(at + 3 * kWidth))) {
      break;  // it is near, and there is one
    }
    i += kStep;
  }
  while (text.size() - i >= kWidth + 2 && !Any(DashLines(text.data() + i))) i += kWidth;
  return FindPlainly(text, i);
}

size_t CountLineEnds(std::string_view text) noexcept {
  const size_t count = CountInVectors<LineEnds>(text, 0);
  return count + static_cast<size_t>(std::ranges::count(text, '\n'));
}

size_t CountCrLfs(std::string_view text) noexcept {
  size_t count = CountInVectors<CrLfs>(text, 1);
  for (size_t at = 0; (at = text.find("\r\n", at)) != std::string_view::npos; at += 2) ++count;
  return count;
}

size_t CountLineEndCharacters(std::string_view text) noexcept {
  const size_t count = CountInVectors<LineEndCharacters>(text, 1);
  return count + CountLineEnds(text) + CountCrLfs(text);
}

std::string_view TakeJoined(std::string_view& text) noexcept {
  const std::string_view whole = text;
  size_t lf = whole.find('\n');
  for (size_t next; lf != whole.npos && lf > 0 && whole[lf - 1] == '\r'; lf = next) {
    next = whole.find('\n', lf + 1);
    if (next == whole.npos && lf + 1 == whole.size()) {
      text = {};
      return whole.substr(0, lf - 1);
    }
  }
  text.remove_prefix(lf == whole.npos ? whole.size() : lf + 1);
  return whole.substr(0, lf);
}

}  // namespace quarda
