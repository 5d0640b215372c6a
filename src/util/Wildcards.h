// Matching of file names, subjects and addresses against masks with `*` and `?`.
#pragma once

#include <string_view>

namespace quarda {

/// Whether the mask matches the whole text; `?` is any one character. A `*` takes the text up to
/// and including the first occurrence of the mask character behind it (taken literally) and never
/// more, so "*.exe" does not match "a.b.exe"; a `*` at the end takes the rest.
bool MatchStr(std::string_view text, std::string_view mask) noexcept;
/// Without regard to letter case.
bool MatchText(std::string_view text, std::string_view mask);
/// `MatchText` from the end to the start, for masks anchored at the end: "*.exe" matches "a.b.exe".
bool MatchTextInvert(std::string_view text, std::string_view mask);

}  // namespace quarda
