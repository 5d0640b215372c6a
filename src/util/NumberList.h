// Lists of numbers and ranges, such as the exit codes "1-99;200".
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "Errors.h"

namespace quarda {

/// A number list with an item that is neither a number nor a range within 0 .. 65535.
class ENumberListError : public EError {
 public:
  ENumberListError() : EError("Ung\xFCltige Nummernliste") {}
  const char* ClassName() const noexcept override { return "ENumberListError"; }
};

/// Whether one of the items, `N` or `N-M`, separated by "," or ";", holds the number. What stands
/// behind the first such item is not read; an invalid item before it raises ENumberListError.
bool IsInNumberList(int32_t number, std::string_view list);

/// Every number of every item in the order of the list, with repetitions. Raises ENumberListError.
std::vector<uint16_t> ParseNumberList(std::string_view list);

}  // namespace quarda
