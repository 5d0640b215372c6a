#include "FileCalls.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>

namespace quarda::platform::posix {
namespace {

template <class Call>
auto Repeat(Call&& call) noexcept {
  auto result = call();
  while (result == -1 && errno == EINTR) result = call();
  return result;
}

/// How much could be written; the error tells why that is not all.
size_t WritePart(int file, const void* data, size_t size) noexcept {
  const char* rest = static_cast<const char*>(data);
  size_t done = 0;
  while (done < size) {
    const ssize_t written = WriteSome(file, rest + done, size - done);
    if (written < 0) break;
    done += static_cast<size_t>(written);
  }
  return done;
}

/// Cuts off the last bytes of the file when this descriptor has written them.
void TakeBack(int file, size_t size) noexcept {
  const off_t end = ::lseek(file, 0, SEEK_CUR);
  struct stat info;
  if (StatOpenFile(file, info) == 0 && info.st_size == end) {
    ResizeFile(file, static_cast<uint64_t>(end) - size);
  }
}

}  // namespace

int OpenFile(const std::string& path, int flags, mode_t mode) noexcept {
  return Repeat([&] { return ::open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY, mode); });
}

// Not repeated: the descriptor is gone even when the call was interrupted.
int CloseFile(int file) noexcept {
  const int result = ::close(file);
  return result == -1 && errno == EINTR ? 0 : result;
}

ssize_t ReadSome(int file, void* buffer, size_t size) noexcept {
  return Repeat([&] { return ::read(file, buffer, size); });
}

ssize_t ReadSomeAt(int file, void* buffer, size_t size, uint64_t offset) noexcept {
  return Repeat([&] { return ::pread(file, buffer, size, static_cast<off_t>(offset)); });
}

ssize_t WriteSome(int file, const void* data, size_t size) noexcept {
  return Repeat([&] { return ::write(file, data, size); });
}

int WriteAll(int file, const void* data, size_t size) noexcept {
  return WritePart(file, data, size) == size ? 0 : -1;
}

int WriteOrTakeBack(int file, const void* data, size_t size) noexcept {
  const size_t written = WritePart(file, data, size);
  if (written == size) return 0;
  const int code = errno;
  if (written > 0) TakeBack(file, written);
  errno = code;
  return -1;
}

int SeekFile(int file, uint64_t offset) noexcept {
  return ::lseek(file, static_cast<off_t>(offset), SEEK_SET) == -1 ? -1 : 0;
}

int ResizeFile(int file, uint64_t size) noexcept {
  return Repeat([&] { return ::ftruncate(file, static_cast<off_t>(size)); });
}

int ReserveRoom(int file, uint64_t size) noexcept {
  if (size == 0) return 0;
  const int result = Repeat([&] { return ::fallocate(file, 0, 0, static_cast<off_t>(size)); });
  return result == -1 && (errno == EOPNOTSUPP || errno == ENOSYS) ? 0 : result;
}

int FlushFile(int file) noexcept {
  return Repeat([&] { return ::fsync(file); });
}

int StatOpenFile(int file, struct stat& info) noexcept { return ::fstat(file, &info); }

int ChangeOpenFileMode(int file, mode_t mode) noexcept {
  return Repeat([&] { return ::fchmod(file, mode); });
}

int ChangeOpenFileOwner(int file, uid_t user, gid_t group) noexcept {
  return Repeat([&] { return ::fchown(file, user, group); });
}

int SetOpenFileTime(int file, const timespec& lastWrite) noexcept {
  const timespec times[2] = {{0, UTIME_OMIT}, lastWrite};
  return ::futimens(file, times);
}

int StatPath(const std::string& path, struct stat& info) noexcept {
  return ::stat(path.c_str(), &info);
}

int StatLink(const std::string& path, struct stat& info) noexcept {
  return ::lstat(path.c_str(), &info);
}

int StatMounted(const std::string& path, struct statx& info) noexcept {
  info.stx_mnt_id = 0;
  return ::statx(AT_FDCWD, path.c_str(), 0, STATX_BASIC_STATS | STATX_MNT_ID, &info);
}

int StatMountedOpenFile(int file, struct statx& info) noexcept {
  info.stx_mnt_id = 0;
  return ::statx(file, "", AT_EMPTY_PATH, STATX_BASIC_STATS | STATX_MNT_ID, &info);
}

int ReadLink(const std::string& path, std::string& target) {
  target.resize(PATH_MAX);
  const ssize_t size = ::readlink(path.c_str(), target.data(), target.size());
  target.resize(size < 0 ? 0 : static_cast<size_t>(size));
  return size < 0 ? -1 : 0;
}

int ChangeMode(const std::string& path, mode_t mode) noexcept {
  return Repeat([&] { return ::chmod(path.c_str(), mode); });
}

int SetPathTime(const std::string& path, const timespec& lastWrite) noexcept {
  const timespec times[2] = {{0, UTIME_OMIT}, lastWrite};
  return ::utimensat(AT_FDCWD, path.c_str(), times, 0);
}

int MakeFolder(const std::string& path) noexcept { return ::mkdir(path.c_str(), 0777); }

int UnlinkPath(const std::string& path) noexcept { return ::unlink(path.c_str()); }

int RenamePath(const std::string& from, const std::string& to) noexcept {
  return ::rename(from.c_str(), to.c_str());
}

int ExchangePaths(const std::string& one, const std::string& other) noexcept {
  return ::renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE);
}

int RenamePathIfFree(const std::string& from, const std::string& to) noexcept {
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS) return -1;
  struct stat info;  // a file system without the flag: the gap between look and rename stays
  if (StatLink(to, info) == 0) {
    errno = EEXIST;
    return -1;
  }
  return errno == ENOENT ? RenamePath(from, to) : -1;
}

int GetCurrentPath(std::string& path) {
  path.resize(PATH_MAX);
  if (::getcwd(path.data(), path.size()) == nullptr) return -1;
  path.resize(path.find('\0'));
  return 0;
}

int EnterFolder(const std::string& path) noexcept { return ::chdir(path.c_str()); }

int EnterOpenFolder(int folder) noexcept { return ::fchdir(folder); }

TFolder OpenFolder(const std::string& path) noexcept { return TFolder(::opendir(path.c_str())); }

const char* NextName(const TFolder& folder) noexcept {
  const dirent* entry = ::readdir(folder.get());
  return entry == nullptr ? nullptr : entry->d_name;
}

const char* NextFolderName(const TFolder& folder) noexcept {
  while (const dirent* entry = ::readdir(folder.get())) {
    const bool isOther =
        entry->d_type != DT_DIR && entry->d_type != DT_LNK && entry->d_type != DT_UNKNOWN;
    if (!isOther) return entry->d_name;
  }
  return nullptr;
}

int StatInFolder(const TFolder& folder, const char* name, struct stat& info) noexcept {
  return ::fstatat(::dirfd(folder.get()), name, &info, 0);
}

int UnlinkInFolder(const TFolder& folder, const char* name) noexcept {
  return ::unlinkat(::dirfd(folder.get()), name, 0);
}

}  // namespace quarda::platform::posix
