// Text functions without state: trimming, counting, numbers, escapes, macros. Texts are bytes in
// the ANSI code page; positions count from 1 and 0 means not found.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace quarda {

/// Whether it is a blank or a control character.
inline bool IsTrimmed(char c) noexcept { return static_cast<unsigned char>(c) <= ' '; }

inline std::string_view TrimLeft(std::string_view text) noexcept {
  while (!text.empty() && IsTrimmed(text.front())) text.remove_prefix(1);
  return text;
}
inline std::string_view TrimRight(std::string_view text) noexcept {
  while (!text.empty() && IsTrimmed(text.back())) text.remove_suffix(1);
  return text;
}
/// The text without blanks and control characters (codes up to 32) at its ends; a view into it.
inline std::string_view Trim(std::string_view text) noexcept { return TrimLeft(TrimRight(text)); }

/// The pieces joined.
std::string Concat(std::initializer_list<std::string_view> pieces);

/// A decimal number of 32 bits with sign: leading blanks and one "+" or "-" are allowed, anything
/// else beside digits and any overflow gives nothing.
std::optional<int32_t> TryStrToInt(std::string_view text) noexcept;
/// The same, but a text that begins with "0x" or "0X" holds up to eight hexadecimal digits, the
/// highest bit being the sign.
std::optional<int32_t> TryStrToIntOrHex(std::string_view text) noexcept;

/// The index of the first word that equals the text without regard to case; -1 without one.
int32_t CaseStringOf(std::string_view text, std::span<const std::string_view> words) noexcept;

/// The text without any of the given characters.
std::string DelChars(std::string_view text, std::string_view chars);

/// The absolute value, padded with "0" to at least that many digits, behind a "-" when negative.
std::string IntToNullStr(int32_t value, uint8_t digits);

/// The value of hexadecimal digits. Of more than eight the last eight count; any other character
/// counts as the digit 0.
uint32_t HexToInt(std::string_view digits) noexcept;

/// How often the character occurs before the first NUL.
size_t CountChar(char c, std::string_view text) noexcept;

/// `count` copies; none for a negative count.
std::string RepeatChar(char c, int32_t count);

std::string InvertString(std::string_view text);

/// The position of the last occurrence.
size_t PosLastChar(char c, std::string_view text) noexcept;

/// The text without the double or single quotes around it, when both ends hold the same one.
std::string DelQuotes(std::string_view text);

/// Decodes a configured text: quotes around it go, "\n" is CR LF, "\m" is LF, and a backslash
/// before any other character stands for that character.
std::string CTextToText(std::string_view text);

/// The reverse: escapes quotes and backslashes, writes CR LF and LF CR as "\n" and other line-break
/// characters as "\m", drops one at the very end that belongs to no pair, and adds quotes.
std::string TextToCText(std::string_view text);

/// Whether a whole file's content starts with the header of a mail: complete lines up to an empty
/// one, and a subject, recipient or sender among them.
bool IsEmailFile(std::string_view content);

/// Asked about each macro with its "$" signs, as written. Returns true when it knows the macro and
/// has put the replacement in its place.
using TMacroCallback = std::function<bool(std::string& macro)>;
using TMacroDataCallback = std::function<bool(std::string& macro, int32_t data)>;

/// Replaces the macros (`$name$`) that the callback knows. Inserted text is not searched again; an
/// unknown macro stays, with both of its "$".
std::string ReplaceMacrosEx(std::string_view text, const TMacroCallback& callback);
/// The same for callbacks that tell their callers apart by a value.
std::string ReplaceMacrosEx(std::string_view text, int32_t data,
                            const TMacroDataCallback& callback);

}  // namespace quarda
