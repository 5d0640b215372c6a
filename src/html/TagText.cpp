#include "TagText.h"

#include <CodePage.h>
#include <Utils.h>

#include <algorithm>
#include <array>

namespace quarda {
namespace {

std::string_view WithoutBrackets(std::string_view tagText) noexcept {
  if (tagText.starts_with('<')) tagText.remove_prefix(1);
  if (tagText.ends_with('>')) tagText.remove_suffix(1);
  return tagText;
}

}  // namespace

TTagParts SplitTag(std::string_view tagText) noexcept {
  std::string_view rest = WithoutBrackets(tagText);
  size_t nameSize = 0;
  while (nameSize < rest.size() && !EndsTagName(rest[nameSize])) ++nameSize;
  std::string_view name = rest.substr(0, nameSize);
  rest.remove_prefix(std::min(nameSize + 1, rest.size()));
  if (rest.starts_with('\r') || rest.starts_with('\n')) rest.remove_prefix(1);
  if (name.ends_with('/')) name.remove_suffix(1);
  return {name, rest};
}

void TAttrReader::DropReturns() {
  withoutReturns_ = DelChars(text_, "\r");
  text_ = withoutReturns_;
}

std::string ValueOf(std::string_view attributes, std::string_view name) {
  if (attributes.empty()) return {};
  for (TAttrReader reader(attributes); reader.Next();) {
    if (platform::SameAnsiText(reader.Attribute().name, name)) {
      return std::string(reader.Attribute().value);
    }
  }
  return {};
}

}  // namespace quarda
