// Program information files, through which systems of the Windows 95 family start DOS programs.
#pragma once

#include <string>
#include <string_view>

namespace quarda {

/// Writes the PIF of a DOS program beside it, replacing an older one, and returns its name.
std::string CreatePifFile(std::string_view program);

/// The name of a program's PIF: the program's with the extension ".pif".
std::string PifName(std::string_view program);

}  // namespace quarda
