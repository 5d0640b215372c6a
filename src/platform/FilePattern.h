// Names of directory entries: against a search pattern, and in the order of a listing.
#pragma once

#include <string_view>

namespace quarda::platform {

/// Whether the pattern holds `*` or `?`.
bool HasWildcards(std::string_view pattern) noexcept;

/// Whether the name fits the pattern, letter case ignored: `?` stands for one character, `*` for
/// any number; `*.*` fits every name, also one without a dot.
bool MatchesFilePattern(std::string_view name, std::string_view pattern) noexcept;

/// Whether it is one of the names by which a folder lists itself and its parent.
bool IsDotName(std::string_view name) noexcept;

/// The order of a listing: letter case ignored where that tells two names apart.
bool SortsBefore(std::string_view a, std::string_view b) noexcept;

}  // namespace quarda::platform
