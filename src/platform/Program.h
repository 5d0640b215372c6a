// This process: its program, its arguments, the module the engine's code lies in.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quarda::platform {

/// The full path of the program this process runs.
std::string ProgramPath();
/// The folder of that program, without a trailing backslash: the engine's base folder.
std::string ProgramFolder();
/// The arguments as the system splits them; argument 0 is the program path. An argument that is an
/// absolute native path of an existing file or folder comes in the Windows form.
std::vector<std::string> ProgramArguments();
/// The number by which the system knows this process.
uint32_t ProcessId() noexcept;
/// Whether another process runs a program of a folder of the same name. False also when the system
/// does not tell.
bool IsCompanion(uint32_t process) noexcept;
/// Runs a program of the same folder with the arguments of this process, which ends with it: where
/// the system can, that program takes the place of this one, elsewhere its exit code is returned,
/// and whoever kills this process ends it, too. Raises EPlatformError when it cannot be started.
int32_t RunInPlace(std::string_view name);
/// The full path of the module (library or program) that holds this code.
std::string ModulePath();

}  // namespace quarda::platform
