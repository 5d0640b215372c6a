// What the shell of the system knows about a file.
#pragma once

#include <cstdint>
#include <string_view>

namespace quarda::platform {

/// The executable type as the Windows shell answers it: 0 when the file is not a program; otherwise
/// the low 16 bits are the characters "MZ", "NE" or "PE" (first character lowest) and the high
/// 16 bits the version of the graphical shell the program was made for, 0 for console programs.
/// Only a file whose name has the extension of a program can be one. Here that is `name` in place
/// of the file's own, so that nobody has to rename a file for the answer.
uint32_t ExecutableType(std::string_view path, std::string_view name) noexcept;
inline uint32_t ExecutableType(std::string_view path) noexcept {
  return ExecutableType(path, path);
}

}  // namespace quarda::platform
