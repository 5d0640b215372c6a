// The one place where a path in the Windows form becomes a path of this system and back.
//
// `C:` is the root folder; QUARDA_DRIVES ("D=/srv/data;E=/mnt/e") names further drives. A path that
// names a drive starts at the drive's root, with or without a slash behind the colon; a path that
// begins with a slash is on C:; any other is relative to the current folder. "." and ".." are
// resolved in the text, as Windows does, and never lead above a drive. Network paths, unknown
// drives, the empty path and a path with a NUL name nothing. Names are bytes; a backslash inside a
// name of this system cannot be expressed.
#pragma once

#include <cerrno>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace quarda::platform::posix {

/// The path for a system call, every name as written; nothing, and ENOENT, when the path names
/// nothing.
std::optional<std::string> ToNative(std::string_view path);

/// A path of this system in the Windows form, on the drive with the longest root that holds it.
std::string ToWindows(std::string_view native);

/// Where the last name of a path begins, behind slash or drive.
size_t NameStart(std::string_view path) noexcept;

/// Whether the path means something else in another current folder.
bool IsRelative(std::string_view path) noexcept;

/// The absolute Windows form, without "." and ".."; a closing backslash stays.
std::string ToAbsolute(std::string_view path, std::string_view currentFolder);

/// The spelling of a native path on the disk, found name by name without regard to letter case.
struct TSpelling {
  std::string path;    ///< names that were not found stay as written
  size_t missing = 0;  ///< how many names at the end were not found
};
TSpelling FindSpelling(const std::string& native);

/// Runs a system call (-1 and errno on failure) on a path that should exist: as written, and when
/// that is not there, once more in the spelling of the disk. Costs one call when it is there.
template <class Call>
int OnExisting(std::string_view path, Call&& call) {
  const std::optional<std::string> native = ToNative(path);
  if (!native) return -1;
  const int result = call(*native);
  if (result != -1 || errno != ENOENT) return result;
  const TSpelling found = FindSpelling(*native);
  if (found.missing > 0 || found.path == *native) {
    errno = ENOENT;
    return -1;
  }
  return call(found.path);
}

/// The native path for something that may have to be created: as written when it is there, else in
/// the spelling of the disk as far as that exists.
std::optional<std::string> NativeTarget(std::string_view path);

}  // namespace quarda::platform::posix
