// Windows-1252 letter case and comparison, and the number format of the user's locale. Independent
// of the C locale of the process.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace quarda::platform {

namespace detail {

using TCaseTable = std::array<char, 256>;

/// The other case of every letter; capital letters and their small ones are listed as ranges.
constexpr TCaseTable MakeCaseTable(bool lower) {
  constexpr struct {
    int first, last, distance;
  } kCapitals[] = {{'A', 'Z', 32},     {0x8A, 0x8A, 16}, {0x8C, 0x8C, 16}, {0x8E, 0x8E, 16},
                   {0x9F, 0x9F, 0x60}, {0xC0, 0xD6, 32}, {0xD8, 0xDE, 32}};
  TCaseTable table{};
  for (int c = 0; c < 256; ++c) table[static_cast<size_t>(c)] = static_cast<char>(c);
  for (const auto& range : kCapitals) {
    for (int c = range.first; c <= range.last; ++c) {
      const int small = c + range.distance;
      table[static_cast<size_t>(lower ? c : small)] = static_cast<char>(lower ? small : c);
    }
  }
  return table;
}

inline constexpr TCaseTable kLowerTable = MakeCaseTable(true);
inline constexpr TCaseTable kUpperTable = MakeCaseTable(false);

}  // namespace detail

inline char LowerAnsi(char c) noexcept {
  return detail::kLowerTable[static_cast<unsigned char>(c)];
}
inline char UpperAnsi(char c) noexcept {
  return detail::kUpperTable[static_cast<unsigned char>(c)];
}
std::string LowerAnsi(std::string_view text);
std::string UpperAnsi(std::string_view text);

/// Whether the texts are equal without regard to letter case.
bool SameAnsiText(std::string_view a, std::string_view b) noexcept;
/// Orders without regard to letter case: negative, 0 or positive.
int CompareAnsiText(std::string_view a, std::string_view b) noexcept;

/// The decimal separator of the user's locale.
char DecimalSeparator();

}  // namespace quarda::platform
