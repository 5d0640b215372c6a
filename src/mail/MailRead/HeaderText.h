// How the value of a header field is written: folded over lines, pieces between semicolons.
#pragma once

#include <string>
#include <string_view>

namespace quarda {

/// Cuts the next value line off a field's value: the text up to a semicolon outside quotes, angle
/// brackets and encoded words, without leading blanks. Empty ones are passed over; false when no
/// line is left.
bool TakeValueLine(std::string_view& rest, std::string_view& line) noexcept;

/// The value of a field that spans lines: the first line trimmed, then the others as they are.
std::string Unfold(std::string_view raw);

}  // namespace quarda
