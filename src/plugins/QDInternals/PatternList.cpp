#include "PatternList.h"

#include <CodePage.h>
#include <Utils.h>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace quarda {

std::vector<std::string> LinesOf(IStringList* list) {
  std::vector<std::string> lines;
  const int32_t count = list ? list->GetCount() : 0;
  lines.reserve(static_cast<size_t>(count));
  for (int32_t i = 0; i < count; ++i) lines.push_back(list->GetStrings(i).Str());
  return lines;
}

void TPatternList::Add(std::string pattern) {
  std::string folded = Folded(pattern);
  patterns_.push_back({std::move(pattern), std::move(folded)});
}

void TPatternList::AddLines(IStringList* list) {
  for (std::string& line : LinesOf(list)) Add(std::move(line));
}

std::optional<size_t> TPatternList::FirstMatch(std::string_view text) const {
  const std::string folded = Folded(text);
  const auto match = std::ranges::find_if(
      patterns_, [&](const TPattern& pattern) { return MatchStr(folded, pattern.folded); });
  if (match == patterns_.end()) return std::nullopt;
  return static_cast<size_t>(match - patterns_.begin());
}

std::string TPatternList::Folded(std::string_view text) const {
  return platform::LowerAnsi(end_ == TReadFrom::kEnd ? InvertString(text) : std::string(text));
}

}  // namespace quarda
