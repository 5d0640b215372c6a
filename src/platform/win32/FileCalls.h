// The calls to the file system that need more than one line. Failures are false (or the invalid
// handle) and the system's last error.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "System.h"

namespace quarda::platform::win32 {

inline constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
inline constexpr size_t kLargestTransfer = size_t{1} << 30;

/// Opens a file that children do not inherit. Others may read, write, rename and delete it
/// meanwhile unless `sharing` says less.
HANDLE OpenFile(const std::string& path, DWORD access, DWORD disposition, DWORD sharing = kShareAll,
                DWORD flags = FILE_ATTRIBUTE_NORMAL) noexcept;
/// A new file for writing that this user, the administrators and the system may read.
HANDLE CreatePrivateFile(const std::string& path) noexcept;
bool WriteAll(HANDLE file, const void* data, size_t size) noexcept;
/// Writes to a file that only takes bytes at its end; when they do not all fit, none stay.
bool WriteOrTakeBack(HANDLE file, const void* data, size_t size) noexcept;
bool SeekFile(HANDLE file, uint64_t offset) noexcept;
/// Leaves the position at the end.
bool ResizeFile(HANDLE file, uint64_t size) noexcept;
/// The attributes, or INVALID_FILE_ATTRIBUTES.
DWORD AttributesOf(std::string_view path);

}  // namespace quarda::platform::win32
