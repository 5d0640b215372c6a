// Every call the backend makes to the file system, one function each. Interrupted calls are
// repeated; failures are -1 (or null) and errno, as the system reports them.
#pragma once

#include <dirent.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace quarda::platform::posix {

/// Opens a file that children do not inherit.
int OpenFile(const std::string& path, int flags, mode_t mode = 0) noexcept;
int CloseFile(int file) noexcept;
ssize_t ReadSome(int file, void* buffer, size_t size) noexcept;
ssize_t ReadSomeAt(int file, void* buffer, size_t size, uint64_t offset) noexcept;
ssize_t WriteSome(int file, const void* data, size_t size) noexcept;
/// Writes everything; 0 or -1.
int WriteAll(int file, const void* data, size_t size) noexcept;
/// The same for a file opened for appending: what was written before a failure is taken back,
/// unless somebody has written behind it.
int WriteOrTakeBack(int file, const void* data, size_t size) noexcept;
int SeekFile(int file, uint64_t offset) noexcept;
int ResizeFile(int file, uint64_t size) noexcept;
/// Takes the room for `size` bytes, so that writing them cannot run out of it.
int ReserveRoom(int file, uint64_t size) noexcept;
int FlushFile(int file) noexcept;
int StatOpenFile(int file, struct stat& info) noexcept;
int ChangeOpenFileMode(int file, mode_t mode) noexcept;
int ChangeOpenFileOwner(int file, uid_t user, gid_t group) noexcept;
int SetOpenFileTime(int file, const timespec& lastWrite) noexcept;

int StatPath(const std::string& path, struct stat& info) noexcept;
/// About the link itself where the path is one.
int StatLink(const std::string& path, struct stat& info) noexcept;
/// Beside the rest the number of the mount, which differs in every set of mounts.
int StatMounted(const std::string& path, struct statx& info) noexcept;
int StatMountedOpenFile(int file, struct statx& info) noexcept;
int ReadLink(const std::string& path, std::string& target);
int ChangeMode(const std::string& path, mode_t mode) noexcept;
int SetPathTime(const std::string& path, const timespec& lastWrite) noexcept;
int MakeFolder(const std::string& path) noexcept;
int UnlinkPath(const std::string& path) noexcept;
int RenamePath(const std::string& from, const std::string& to) noexcept;
/// Swaps the names of two files; not every file system can.
int ExchangePaths(const std::string& one, const std::string& other) noexcept;
/// Renames only when nothing has the new name yet.
int RenamePathIfFree(const std::string& from, const std::string& to) noexcept;
int GetCurrentPath(std::string& path);
int EnterFolder(const std::string& path) noexcept;
int EnterOpenFolder(int folder) noexcept;

struct TCloseFolder {
  void operator()(DIR* folder) const noexcept { ::closedir(folder); }
};
using TFolder = std::unique_ptr<DIR, TCloseFolder>;
TFolder OpenFolder(const std::string& path) noexcept;
/// The next name, or null at the end.
const char* NextName(const TFolder& folder) noexcept;
/// The next name of a folder, or of what only a closer look can tell from one.
const char* NextFolderName(const TFolder& folder) noexcept;
int StatInFolder(const TFolder& folder, const char* name, struct stat& info) noexcept;
int UnlinkInFolder(const TFolder& folder, const char* name) noexcept;

/// A descriptor that closes itself.
class TDescriptor {
 public:
  TDescriptor() = default;
  explicit TDescriptor(int file) noexcept : file_(file) {}
  TDescriptor(TDescriptor&& other) noexcept : file_(std::exchange(other.file_, -1)) {}
  TDescriptor(const TDescriptor&) = delete;
  TDescriptor& operator=(const TDescriptor&) = delete;
  ~TDescriptor() {
    if (file_ >= 0) CloseFile(file_);
  }

  int Get() const noexcept { return file_; }
  explicit operator bool() const noexcept { return file_ >= 0; }
  void Reset(int file) noexcept {
    if (file_ >= 0) CloseFile(file_);
    file_ = file;
  }
  /// Closes now and says whether that went well.
  int Close() noexcept {
    const int file = file_;
    file_ = -1;
    return CloseFile(file);
  }

 private:
  int file_ = -1;
};

}  // namespace quarda::platform::posix
