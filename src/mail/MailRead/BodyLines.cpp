#include "BodyLines.h"

#include <algorithm>

namespace quarda {
namespace {

constexpr std::string_view kLineEnd = "\r\n";

std::string_view WithoutLineEnd(std::string_view text) noexcept {
  if (!text.ends_with('\n')) return text;
  text.remove_suffix(1);
  if (text.ends_with('\r')) text.remove_suffix(1);
  return text;
}

}  // namespace

std::string_view TBodyLines::TakeJoinedOfList() noexcept {
  const std::string_view first = (*list_)[next_++];
  const char* end = first.data() + first.size();
  // A line that begins two bytes behind another lies in the same block, so they can be read.
  while (next_ < end_ && (*list_)[next_].data() == end + kLineEnd.size() &&
         std::string_view(end, kLineEnd.size()) == kLineEnd) {
    end += kLineEnd.size() + (*list_)[next_++].size();
  }
  return {first.data(), static_cast<size_t>(end - first.data())};
}

size_t TBodyLines::CountLines() const noexcept {
  if (list_) return end_ - std::min(next_, end_);
  return CountLineEnds(text_) + (text_.empty() || text_.ends_with('\n') ? 0 : 1);
}

size_t TBodyLines::CountCharacters() const noexcept {
  if (!list_) return text_.size() - CountLineEndCharacters(text_);
  size_t count = 0;
  for (size_t i = next_; i < end_; ++i) count += (*list_)[i].size();
  return count;
}

std::array<char, 2> TBodyLines::LastTwo() const noexcept {
  std::array<char, 2> two{};
  size_t missing = two.size();
  const auto take = [&](std::string_view line) {
    for (; missing > 0 && !line.empty(); line.remove_suffix(1)) two[--missing] = line.back();
  };
  for (size_t i = end_; missing > 0 && i > next_;) take((*list_)[--i]);
  for (std::string_view rest = text_; missing > 0 && !rest.empty();) {
    const std::string_view content = WithoutLineEnd(rest);
    const size_t start = content.rfind('\n') + 1;  // npos + 1 is the start
    take(content.substr(start));
    rest = content.substr(0, start);
  }
  return two;
}

size_t TBodyLines::Join(std::string_view separator, char* target) const noexcept {
  const size_t count = CountLines();
  const size_t size = CountCharacters() + (count == 0 ? 0 : count - 1) * separator.size();
  if (!target) return size;
  TBodyLines rest = *this;
  std::string_view line;
  for (bool isFirst = true; rest.Next(line); isFirst = false) {
    if (!isFirst) target = std::ranges::copy(separator, target).out;
    target = std::ranges::copy(line, target).out;
  }
  return size;
}

}  // namespace quarda
