// Whole files: size, directory record, move, backup, kind of program. Nothing here raises an error;
// failure shows in the result alone.
#pragma once

#include <Files.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace quarda {

/// The size of the first directory entry that matches (wildcards allowed), whatever its attributes;
/// 0 when none does. Sizes beyond 2 GB come back as the largest number.
int32_t FileGetSize(std::string_view fileName);

/// The first directory entry that matches; an empty record when none does.
platform::TFileRecord FileGetInfo(std::string_view fileName);

/// Moves a file, also across volumes, over an existing and possibly read-only target, creating the
/// target's folders. The old target is gone even when the move fails; the source then stays. A file
/// cannot be moved onto itself.
bool MoveFile(std::string_view source, std::string_view dest);

/// Renames the file to its name with the extension ".bak", replacing an older one. An old ".bak"
/// goes even when the file does not exist.
void BackupFile(std::string_view fileName);
/// Puts the ".bak" file, if there is one, in the place of the file.
void RestoreBackupFile(std::string_view fileName);

/// The folder for temporary files, with its trailing backslash.
std::string GetTempDir();

/// The kinds of program as `GetFileInfo` numbers them.
enum TProgramKind : int32_t {
  kNoProgram = -1,
  kDosProgram = 0,  ///< also batch, command and ".pif" files
  kConsoleProgram = 1,
  kWindowsProgram = 2,
};

/// What kind of program the file is. A file named ".inp" is judged as if it were named ".exe",
/// whatever else has that name.
int32_t GetFileInfo(std::string_view fileName);

}  // namespace quarda
