// Nothing is ever tried twice: each step consumes text and mask, which keeps the match linear.
#include "Wildcards.h"

#include <CodePage.h>

#include "TextUtils.h"

namespace quarda {
namespace {

bool HoldsOnlyStars(std::string_view mask) noexcept {
  return mask.find_first_not_of('*') == std::string_view::npos;
}

}  // namespace

bool MatchStr(std::string_view text, std::string_view mask) noexcept {
  if (mask.empty()) return text.empty();
  size_t at = 0;
  size_t inMask = 0;
  while (at < text.size()) {
    if (inMask == mask.size()) return false;
    const char wanted = mask[inMask++];
    if (wanted == '*') {
      if (inMask == mask.size()) return true;
      at = text.find(mask[inMask++], at);
      if (at == std::string_view::npos) return false;
    } else if (wanted != '?' && wanted != text[at]) {
      return false;
    }
    ++at;
  }
  return HoldsOnlyStars(mask.substr(inMask));
}

bool MatchText(std::string_view text, std::string_view mask) {
  return MatchStr(platform::LowerAnsi(text), platform::LowerAnsi(mask));
}

bool MatchTextInvert(std::string_view text, std::string_view mask) {
  return MatchText(InvertString(text), InvertString(mask));
}

}  // namespace quarda
