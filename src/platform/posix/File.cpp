// Open files.
#include <fcntl.h>

#include <cerrno>
#include <utility>

#include "FileCalls.h"
#include "Files.h"
#include "Paths.h"
#include "PlatformError.h"

namespace quarda::platform {

using namespace posix;

namespace {

constexpr mode_t kForAll = 0666;  // as far as the user's mask allows
constexpr mode_t kForUser = 0600;

[[noreturn]] void Raise(std::string_view path) { throw EPlatformError(LastErrorCode(), path); }

/// Folders can be opened for reading here, but their content is no file's.
int OpenForReading(const std::string& native) {
  const int file = OpenFile(native, O_RDONLY);
  struct stat info;
  if (file < 0 || (StatOpenFile(file, info) == 0 && !S_ISDIR(info.st_mode))) return file;
  CloseFile(file);
  errno = EISDIR;
  return -1;
}

/// A file without write permission is read-only, as on every system.
int OpenForUpdate(const std::string& native) {
  const int file = OpenFile(native, O_RDWR | O_NONBLOCK);
  struct stat info;
  if (file < 0) return file;
  if (StatOpenFile(file, info) == 0 && S_ISREG(info.st_mode) && (info.st_mode & S_IWUSR) != 0) {
    return file;
  }
  CloseFile(file);
  errno = EACCES;
  return -1;
}

/// Opens the file that is there, in whatever letter case, or creates it.
int OpenOrCreate(std::string_view path, int flags) {
  const int file =
      OnExisting(path, [&](const std::string& native) { return OpenFile(native, flags); });
  if (file >= 0 || errno != ENOENT) return file;
  const std::optional<std::string> native = ToNative(path);
  return native ? OpenFile(FindSpelling(*native).path, flags | O_CREAT, kForAll) : -1;
}

int CreateNew(std::string_view path) {
  constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW;
  const std::optional<std::string> native = ToNative(path);
  if (!native) return -1;
  const int file = OpenFile(*native, kFlags, kForUser);
  if (file >= 0 || errno != ENOENT) return file;
  return OpenFile(FindSpelling(*native).path, kFlags, kForUser);
}

int Open(std::string_view path, TOpenMode mode) {
  switch (mode) {
    case TOpenMode::kRead:
    case TOpenMode::kReadShared:
      return OnExisting(path, OpenForReading);
    case TOpenMode::kCreate:
      return OpenOrCreate(path, O_WRONLY | O_TRUNC);
    case TOpenMode::kCreateNew:
      return CreateNew(path);
    case TOpenMode::kUpdate:
      return OnExisting(path, OpenForUpdate);
    case TOpenMode::kAppend:
      return OpenOrCreate(path, O_WRONLY | O_APPEND);
  }
  errno = EINVAL;
  return -1;
}

}  // namespace

TFile::TFile(std::string_view path, TOpenMode mode)
    : handle_(-1), appends_(mode == TOpenMode::kAppend), path_(path) {
  handle_ = Open(path, mode);
  if (handle_ < 0) Raise(path_);
}

TFile::TFile(TFile&& other) noexcept
    : handle_(std::exchange(other.handle_, -1)),
      appends_(other.appends_),
      path_(std::move(other.path_)) {}

TFile::~TFile() {
  if (handle_ >= 0) CloseFile(static_cast<int>(handle_));
}

size_t TFile::Read(void* buffer, size_t size) {
  char* rest = static_cast<char*>(buffer);
  size_t done = 0;
  while (done < size) {
    const ssize_t count = ReadSome(static_cast<int>(handle_), rest + done, size - done);
    if (count < 0) Raise(path_);
    if (count == 0) break;
    done += static_cast<size_t>(count);
  }
  return done;
}

void TFile::Write(const void* data, size_t size) {
  const auto write = appends_ ? WriteOrTakeBack : WriteAll;
  if (write(static_cast<int>(handle_), data, size) != 0) Raise(path_);
}

void TFile::Seek(uint64_t offset) {
  if (SeekFile(static_cast<int>(handle_), offset) != 0) Raise(path_);
}

uint64_t TFile::Size() const {
  struct stat info;
  if (StatOpenFile(static_cast<int>(handle_), info) != 0) Raise(path_);
  return static_cast<uint64_t>(info.st_size);
}

void TFile::SetSize(uint64_t size) {
  if (ResizeFile(static_cast<int>(handle_), size) != 0) Raise(path_);
}

void TFile::Flush() {
  if (FlushFile(static_cast<int>(handle_)) != 0) Raise(path_);
}

}  // namespace quarda::platform
