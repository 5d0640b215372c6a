// Names of directory entries against a search pattern.
#pragma once

#include <string_view>

namespace quarda::platform {

/// Whether the pattern holds `*` or `?`.
bool HasWildcards(std::string_view pattern) noexcept;

/// Whether the name fits the pattern, letter case ignored: `?` stands for one character, `*` for
/// any number; `*.*` fits every name, also one without a dot.
bool MatchesFilePattern(std::string_view name, std::string_view pattern) noexcept;

}  // namespace quarda::platform
