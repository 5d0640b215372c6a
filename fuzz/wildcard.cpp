// The matcher against the rules told once more, character by character; text and mask are separated
// by the first line feed.
#include <Utils.h>

#include <string>

#include "Fuzz.h"

namespace {

bool Matches(std::string text, std::string mask) {
  while (!text.empty() && !mask.empty()) {
    if (mask == "*") return true;
    if (mask.front() == '*') {
      while (!text.empty() && text.front() != mask[1]) text.erase(0, 1);
      if (text.empty()) return false;
      mask.erase(0, 1);
    } else if (mask.front() != '?' && mask.front() != text.front()) {
      return false;
    }
    text.erase(0, 1);
    mask.erase(0, 1);
  }
  return text.empty() && mask.find_first_not_of('*') == std::string::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace quarda;
  const std::string_view input = fuzz::AsText(data, size);
  const size_t at = input.find('\n');
  if (at == std::string_view::npos) return 0;
  const std::string text(input.substr(0, at)), mask(input.substr(at + 1));
  fuzz::Require(MatchStr(text, mask) == Matches(text, mask), "match as the rules say");
  fuzz::Require(MatchTextInvert(InvertString(text), InvertString(mask)) == MatchText(text, mask),
                "inverting twice is no change");
  return 0;
}
