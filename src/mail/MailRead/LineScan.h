// Searching text for lines, at memory speed.
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace quarda {

/// The offset of the first "--" that stands right behind an LF; npos when there is none.
size_t FindDashLine(std::string_view text) noexcept;

/// How many LFs the text holds.
size_t CountLineEnds(std::string_view text) noexcept;

/// How many of them stand behind a CR.
size_t CountCrLfs(std::string_view text) noexcept;

/// How many characters belong to the line ends LF and CR LF: both counts in one pass.
size_t CountLineEndCharacters(std::string_view text) noexcept;

/// Cuts the first line off the text and returns it without its LF or CR LF. A lone CR is part of
/// the line.
inline std::string_view TakeLine(std::string_view& text) noexcept {
  const auto* lf = static_cast<const char*>(std::memchr(text.data(), '\n', text.size()));
  if (!lf) {
    const std::string_view line = text;
    text = {};
    return line;
  }
  size_t size = static_cast<size_t>(lf - text.data());
  const char* const start = text.data();
  text.remove_prefix(size + 1);
  if (size > 0 && start[size - 1] == '\r') --size;
  return {start, size};
}

/// Cuts the lines off the text that end in CR LF, together with the first one that does not, and
/// returns them with the line ends between them but without the last one's.
std::string_view TakeJoined(std::string_view& text) noexcept;

}  // namespace quarda
