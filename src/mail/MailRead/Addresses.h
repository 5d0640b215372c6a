// Addresses in header values (RFC 5322, without comments and groups), and the small text functions
// that header values need.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quarda {

class TStringList;

/// A set of 8-bit characters.
class TCharSet {
 public:
  constexpr TCharSet() = default;
  /// Every character of the text.
  constexpr explicit TCharSet(std::string_view members) {
    for (const char member : members) Include(member);
  }
  constexpr void Include(char c) noexcept { has_[static_cast<unsigned char>(c)] = true; }
  constexpr bool Contains(char c) const noexcept { return has_[static_cast<unsigned char>(c)]; }

 private:
  std::array<bool, 256> has_{};
};

/// The bare address of one address as a header writes it; empty when there is none.
std::string HeaderEmailToAddress(std::string_view text);
/// Appends one line for each address of the value, empty ones included: they are separated by
/// commas outside quotes and angle brackets. Nothing is added for what follows a comma at the end.
void ExtractAddressList(std::string_view value, TStringList& list);
/// One header value, folded after every address; empty lines are left out.
std::string MakeAddressList(const TStringList& list);

/// Splits at the first "=" and trims both sides. Without one the name is the whole text, the value
/// is empty and the result false. The text may be a view of either string.
bool ExtractNameValuePair(std::string_view text, std::string& name, std::string& value);
/// The text without one pair of enclosing single or double quotes.
std::string RemoveQuotes(std::string_view text);
/// The position, counted from 1, of the first character that is in the set; 0 when none is.
size_t PosAnyChar(std::string_view text, const TCharSet& set) noexcept;
/// The size of a file in bytes, at most 2^31 - 1; 0 when there is no such file. The name may hold
/// wildcards; folders that match are passed over.
int32_t GetFileSize(std::string_view fileName);

}  // namespace quarda
