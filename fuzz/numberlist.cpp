// The two readers of number lists agree.
#include <Utils.h>

#include <algorithm>

#include "Fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace quarda;
  if (size < 2 || size > 200) return 0;
  const int32_t number = data[0] | data[1] << 8;
  const std::string_view list = fuzz::AsText(data + 2, size - 2);
  return fuzz::AllowErrors([&] {
    const auto numbers = ParseNumberList(list);  // a list without an error from here on
    const bool listed = std::ranges::find(numbers, number) != numbers.end();
    fuzz::Require(IsInNumberList(number, list) == listed, "both readers agree");
    fuzz::Require(!IsInNumberList(-1, list) && !IsInNumberList(65536, list), "16 bits only");
    if (!numbers.empty()) fuzz::Require(IsInNumberList(numbers.back(), list), "found");
  });
}
