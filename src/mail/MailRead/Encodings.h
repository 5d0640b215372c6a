// Transfer encodings of bodies (RFC 2045) and encoded words of header values (RFC 2047), read as
// mail programs write them rather than as the standards want them: no length of a line or word is
// enforced, what cannot be decoded is passed on, blanks between two encoded words stay.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "MailTypes.h"

namespace quarda {

class TBodyLines;

/// Decodes quoted-printable text; in header mode "_" is a blank. A NUL ends the text, malformed
/// escapes stay as they are. The result is never longer than the text.
std::string QuotedPrintableToAnsi(std::string_view text, bool headerMode);
/// Escapes "=" and every character above 127 (in header mode "_" too, and a blank becomes "_").
/// Adds no soft line breaks.
std::string AnsiToQuotedPrintable(std::string_view text, bool headerMode);

/// Characters that `BufferEncode` writes for `bytes`.
constexpr size_t CalcEncodeBufSize(size_t bytes) noexcept { return (bytes + 2) / 3 * 4; }
/// Bytes that `BufferDecode` writes for `characters`; it may report fewer.
constexpr size_t CalcDecodeBufSize(size_t characters) noexcept { return characters / 4 * 3; }

/// Encodes into a buffer of `capacity` characters and sets `capacity` to the number written. False,
/// with nothing written, when the buffer is too small.
bool BufferEncode(const void* source, size_t size, char* target, size_t& capacity,
                  TMailEncodingType encoding) noexcept;
/// Decodes into a buffer of `capacity` bytes, of which `CalcDecodeBufSize` are written, and sets
/// `capacity` to the number of decoded bytes. Characters outside the alphabet count as zero bits,
/// a last group that is not complete is ignored, fill characters at the very end shorten the
/// result. False, with nothing written, when the buffer is too small.
bool BufferDecode(const char* source, size_t size, void* target, size_t& capacity,
                  TMailEncodingType encoding) noexcept;

/// `BufferEncode` of a text. "=" fills up the last group in all three alphabets.
std::string TextEncode(std::string_view text, TMailEncodingType encoding);
/// `BufferDecode` of a text.
std::string TextDecode(std::string_view text, TMailEncodingType encoding);

/// `BufferDecode` of the lines put together without line ends, which are never put together in
/// memory. When the buffer turns out to be too small it may have been written to.
bool DecodeLines(TBodyLines lines, void* target, size_t& capacity,
                 TMailEncodingType encoding) noexcept;

/// `QuotedPrintableToAnsi` (not in header mode) of the lines joined with CR LF, which are never put
/// together in memory.
std::string DecodeQuotedPrintableLines(TBodyLines lines);
/// The same into a buffer; at most `capacity` bytes are written, and with SIZE_MAX just the decoded
/// text. Returns the length of the whole decoded text, so a null buffer of capacity 0 asks for the
/// size.
size_t DecodeQuotedPrintableLines(TBodyLines lines, void* target, size_t capacity);

/// The value as one encoded word when it holds a control character or one above 127; otherwise the
/// value itself.
std::string EncodeHeader(std::string_view value);
/// The value with its encoded words decoded; their character sets are ignored. What is cut off in
/// the middle of a word is passed on without its opening "=?".
std::string DecodeHeader(std::string_view value);

}  // namespace quarda
