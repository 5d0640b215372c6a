#include "NumberList.h"

#include <algorithm>

#include "TextUtils.h"

namespace quarda {
namespace {

constexpr int32_t kLargest = 65535;

struct TRange {
  int32_t first;
  int32_t last;
};

int32_t ParseNumber(std::string_view text) {
  const auto number = TryStrToInt(text);
  if (!number) throw ENumberListError();
  return *number;
}

TRange ParseItem(std::string_view item) {
  const size_t dash = item.find('-');
  TRange range{};
  range.first = ParseNumber(item.substr(0, dash));
  range.last = dash == std::string_view::npos ? range.first : ParseNumber(item.substr(dash + 1));
  // The text before the dash holds no sign of its own, so only the upper end can be out of bounds.
  if (range.last < range.first || range.last > kLargest) throw ENumberListError();
  return range;
}

/// Takes the first item and its separator off the list, which must not be empty.
TRange TakeItem(std::string_view& list) {
  const size_t end = std::min(list.find_first_of(",;"), list.size());
  const TRange range = ParseItem(list.substr(0, end));
  list.remove_prefix(std::min(end + 1, list.size()));
  return range;
}

}  // namespace

bool IsInNumberList(int32_t number, std::string_view list) {
  while (!list.empty()) {
    const TRange range = TakeItem(list);
    if (range.first <= number && number <= range.last) return true;
  }
  return false;
}

std::vector<uint16_t> ParseNumberList(std::string_view list) {
  std::vector<uint16_t> numbers;
  while (!list.empty()) {
    const TRange range = TakeItem(list);
    for (int32_t n = range.first; n <= range.last; ++n) {
      numbers.push_back(static_cast<uint16_t>(n));
    }
  }
  return numbers;
}

}  // namespace quarda
