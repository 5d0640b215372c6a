// What the shell of the system knows about a file.
#pragma once

#include <cstdint>
#include <string_view>

namespace quarda::platform {

/// The executable type as the Windows shell answers it: 0 when the file is not a program; otherwise
/// the low 16 bits are the characters "MZ", "NE" or "PE" (first character lowest) and the high
/// 16 bits the version of the graphical shell the program was made for, 0 for console programs.
/// Asked only of names whose extension marks a program.
uint32_t ExecutableType(std::string_view path) noexcept;

}  // namespace quarda::platform
