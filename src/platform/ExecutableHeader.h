// What the first bytes of a program say about it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace quarda::platform {

/// How much of a file's start, and of its new header, the functions below look at.
inline constexpr size_t kOldHeaderSize = 64;
inline constexpr size_t kNewHeaderSize = 96;

/// The answer for programs, batch and command files of MS-DOS.
inline constexpr uint32_t kDosProgram = 'M' | 'Z' << 8;

/// What the extension of a name tells.
enum class TProgramKind {
  kNone,     ///< no program
  kCommand,  ///< run by the command processor or loaded as it is
  kImage,    ///< its headers tell
};
TProgramKind ProgramKindOf(std::string_view fileName) noexcept;

/// Where the new header begins, as the start of a program says (it may lie outside the file); 0
/// when it has none. Nothing when the start is not that of a program.
std::optional<uint32_t> NewHeaderOffset(std::string_view start) noexcept;

/// The executable type (see Shell.h) of a program by its new header; empty when it has none.
uint32_t ExecutableTypeOf(std::string_view newHeader) noexcept;

}  // namespace quarda::platform
