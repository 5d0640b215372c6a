// Only the last star seen needs to be tried again: whatever an earlier one could take, the later
// one can take as well. The cost is at most name times pattern length.
#include "FilePattern.h"

#include <algorithm>

#include "CodePage.h"

namespace quarda::platform {

bool HasWildcards(std::string_view pattern) noexcept {
  return std::ranges::any_of(pattern, [](char c) { return c == '*' || c == '?'; });
}

bool IsDotName(std::string_view name) noexcept { return name == "." || name == ".."; }

bool SortsBefore(std::string_view a, std::string_view b) noexcept {
  const int order = CompareAnsiText(a, b);
  return order != 0 ? order < 0 : a < b;
}

bool MatchesFilePattern(std::string_view name, std::string_view pattern) noexcept {
  if (pattern == "*.*") return true;
  constexpr size_t kNone = std::string_view::npos;
  size_t at = 0;
  size_t in = 0;
  size_t star = kNone;
  size_t starAt = 0;
  while (at < name.size()) {
    if (in < pattern.size() && pattern[in] == '*') {
      star = in++;
      starAt = at;
    } else if (in < pattern.size() &&
               (pattern[in] == '?' || LowerAnsi(pattern[in]) == LowerAnsi(name[at]))) {
      ++in;
      ++at;
    } else if (star != kNone) {
      in = star + 1;
      at = ++starAt;
    } else {
      return false;
    }
  }
  while (in < pattern.size() && pattern[in] == '*') ++in;
  return in == pattern.size();
}

}  // namespace quarda::platform
