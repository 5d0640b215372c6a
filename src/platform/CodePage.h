// Windows-1252 letter case and comparison, and the number format of the user's locale. Independent
// of the C locale of the process.
#pragma once

#include <string>
#include <string_view>

namespace quarda::platform {

char LowerAnsi(char c) noexcept;
char UpperAnsi(char c) noexcept;
std::string LowerAnsi(std::string_view text);
std::string UpperAnsi(std::string_view text);

/// Whether the texts are equal without regard to letter case.
bool SameAnsiText(std::string_view a, std::string_view b) noexcept;
/// Orders without regard to letter case: negative, 0 or positive.
int CompareAnsiText(std::string_view a, std::string_view b) noexcept;

/// The decimal separator of the user's locale.
char DecimalSeparator();

}  // namespace quarda::platform
