// Paths as they are given to the system.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quarda::platform::win32 {

/// The path for a system call; nothing, and the system's code set, when it is empty, holds a NUL or
/// names a device ("NUL", "C:\mails\com1.txt"): the engine wants files only, and an attachment may
/// have any name.
std::optional<std::string> SystemPath(std::string_view path);

/// Where the last name of a path begins, behind slash or drive.
size_t NameStart(std::string_view path) noexcept;

/// Whether the path begins with a drive and its root folder.
bool HasDriveAndRoot(std::string_view path) noexcept;

/// The file of a name without a folder: in the program's folder, else in a folder of the search
/// path that is given in full. `extension` is appended to a name without one. Empty when there is
/// none. The current folder does not count: it may be that of a mail, which may hold anything.
std::string FindOnSearchPath(const std::string& name, const char* extension);

}  // namespace quarda::platform::win32
