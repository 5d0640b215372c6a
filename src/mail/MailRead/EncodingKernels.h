// The inner loops of the decoders, in the vector instructions of the processor where it has them.
#pragma once

#include <cstddef>
#include <string_view>

namespace quarda {

class TBodyLines;

namespace kernels {

/// Decodes base64 characters in wide blocks: all of a multiple of four, or nothing when that is too
/// short or the processor has no wide blocks. Writes no byte but the decoded ones. Returns the
/// number of characters decoded.
size_t DecodeBase64(const char* source, size_t size, char* target) noexcept;

/// Where the next byte goes, and how many may.
struct TTarget {
  char* at;
  size_t room;
};

/// Decodes lines as long as each is made of whole groups, is long enough for a wide block and fits
/// into the room of the target, which is moved on. False at the end of the lines; true with the
/// first line that is not decoded.
bool DecodeBase64Lines(TBodyLines& lines, std::string_view& line, TTarget& target) noexcept;

/// How far a decoder came in its source and in its target.
struct TProgress {
  size_t read;
  size_t written;
};

/// Decodes quoted-printable text up to a NUL or an "=" that does not begin two hexadecimal digits
/// (a soft line break CR LF may be passed over), in header mode with "_" made a blank. The target
/// must have room for the whole text; what lies behind the decoded part is undefined.
TProgress DecodePlainQuoted(const char* source, size_t size, char* target,
                            bool headerMode) noexcept;

}  // namespace kernels
}  // namespace quarda
