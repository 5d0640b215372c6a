#include "CodePage.h"

#include <algorithm>

namespace quarda::platform {

std::string LowerAnsi(std::string_view text) {
  std::string result(text);
  for (char& c : result) c = LowerAnsi(c);
  return result;
}

std::string UpperAnsi(std::string_view text) {
  std::string result(text);
  for (char& c : result) c = UpperAnsi(c);
  return result;
}

bool SameAnsiText(std::string_view a, std::string_view b) noexcept {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (a[i] != b[i] && LowerAnsi(a[i]) != LowerAnsi(b[i])) return false;
  }
  return true;
}

int CompareAnsiText(std::string_view a, std::string_view b) noexcept {
  const size_t common = std::min(a.size(), b.size());
  for (size_t i = 0; i < common; ++i) {
    const int difference =
        static_cast<unsigned char>(LowerAnsi(a[i])) - static_cast<unsigned char>(LowerAnsi(b[i]));
    if (difference != 0) return difference;
  }
  return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}

}  // namespace quarda::platform
