// Dynamic libraries.
#pragma once

#include <cstdint>
#include <string_view>

namespace quarda::platform {

/// A loaded library; 0 stands for none.
using TLibraryHandle = uintptr_t;

/// Loads a library, given as a path or as a bare name; a bare name is looked for in the program's
/// folder and then by the system's search. 0 when that fails.
TLibraryHandle LoadLibraryFile(std::string_view path) noexcept;
/// The address of an exported name, or null.
void* FindExport(TLibraryHandle library, const char* name) noexcept;
void UnloadLibrary(TLibraryHandle library) noexcept;

}  // namespace quarda::platform
