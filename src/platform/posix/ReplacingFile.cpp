// New content is written to ".quarda-<16 hex digits>.tmp" in the folder of the file it replaces.
// A process killed before the rename leaves that file behind; one replacement in 64, chosen by the
// random number of its own name, therefore looks through the folder and deletes those of this user
// that are older than a day.
#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <ctime>

#include "FileCalls.h"
#include "Files.h"
#include "Paths.h"
#include "PlatformError.h"
#include "WriteBuffer.h"

namespace quarda::platform {

using namespace posix;

namespace {

constexpr std::string_view kPrefix = ".quarda-";
constexpr std::string_view kSuffix = ".tmp";
constexpr size_t kDigits = 16;
constexpr size_t kBufferSize = 65536;
constexpr mode_t kModeBits = 07777;

uint64_t RandomNumber() noexcept {
  uint64_t number = 0;
  if (::getrandom(&number, sizeof number, GRND_NONBLOCK) == sizeof number) return number;
  timespec now{};  // before the system has gathered any randomness; exclusive creation still holds
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<uint64_t>(now.tv_nsec) << 32 ^ static_cast<uint64_t>(::getpid());
}

std::string TemporaryName(uint64_t number) {
  std::string name(kPrefix);
  for (size_t i = 0; i < kDigits; ++i) name += "0123456789abcdef"[number >> (i * 4) & 15];
  return name.append(kSuffix);
}

bool IsTemporaryName(std::string_view name) {
  return name.size() == kPrefix.size() + kDigits + kSuffix.size() && name.starts_with(kPrefix) &&
         name.ends_with(kSuffix);
}

/// Deletes what killed processes left behind.
void RemoveStaleFiles(const std::string& path) noexcept {
  constexpr time_t kDay = 86'400;
  const TFolder folder = OpenFolder(path);
  if (folder == nullptr) return;
  const time_t now = ::time(nullptr);
  while (const char* name = NextName(folder)) {
    struct stat info;
    if (IsTemporaryName(name) && StatInFolder(folder, name, info) == 0 && S_ISREG(info.st_mode) &&
        info.st_uid == ::geteuid() && now - info.st_mtim.tv_sec > kDay) {
      UnlinkInFolder(folder, name);
    }
  }
}

std::string FolderOf(const std::string& native) {
  const size_t end = native.rfind('/');
  return end == std::string::npos ? "." : native.substr(0, end + 1);
}

std::string InFolder(const std::string& folder, std::string_view name) {
  return folder == "." ? std::string(name) : folder + std::string(name);
}

}  // namespace

struct TReplacingFile::TState {
  TState(std::string_view given, TDurability wanted)
      : path(given),
        flushed(wanted == TDurability::kFlushed),
        passing(wanted == TDurability::kPassing) {}
  ~TState() { Abandon(); }

  [[noreturn]] void Raise() const { throw EPlatformError(LastErrorCode(), path); }
  [[noreturn]] void Raise(int code) const {
    throw EPlatformError(static_cast<uint32_t>(code), path);
  }

  void FindTarget();
  bool LookAtTarget();
  void FollowLink();
  void CreateTemporary();
  void OpenTarget();
  bool TakeOverOwnerAndMode();
  void Abandon() noexcept;
  void WriteOut(const void* data, size_t size);
  void RenameIntoPlace();
  bool SwapIntoPlace();
  void WriteInPlace();
  void FlushFolder() const noexcept;

  std::string path;  // as the caller gave it, for error texts
  bool flushed;
  bool passing;
  std::string target;  // native, links followed
  struct stat old {};
  bool exists = false;
  std::string temporary;  // native; empty when there is none
  TDescriptor file;       // the temporary, or the target when that is written in place
  std::string buffer;     // not yet written; everything when the target is written in place
  bool inPlace = false;
  bool done = false;
};

/// Finds the file that the path names in the end. One call when it is there and is no link.
void TReplacingFile::TState::FindTarget() {
  constexpr int kMostLinks = 40;
  const std::optional<std::string> native = ToNative(path);
  if (!native) Raise(ENOENT);
  target = *native;
  exists = LookAtTarget();
  if (!exists) {
    target = FindSpelling(target).path;
    exists = LookAtTarget();
  }
  for (int links = 0; exists && S_ISLNK(old.st_mode); ++links) {
    if (links == kMostLinks) Raise(ELOOP);
    FollowLink();
    exists = LookAtTarget();
  }
  if (exists && S_ISDIR(old.st_mode)) Raise(EISDIR);
  if (exists && (old.st_mode & S_IWUSR) == 0) Raise(EACCES);  // read-only, as on every system
}

bool TReplacingFile::TState::LookAtTarget() {
  if (StatLink(target, old) == 0) return true;
  if (errno != ENOENT) Raise();
  return false;
}

void TReplacingFile::TState::FollowLink() {
  std::string next;
  if (ReadLink(target, next) != 0) Raise();
  target = next.starts_with('/') ? next : InFolder(FolderOf(target), next);
}

void TReplacingFile::TState::CreateTemporary() {
  constexpr mode_t kNewFile = 0666;
  const mode_t mode = exists ? old.st_mode & 0777 : kNewFile;
  const std::string folder = FolderOf(target);
  do {
    const uint64_t number = RandomNumber();
    temporary = InFolder(folder, TemporaryName(number));
    file.Reset(OpenFile(temporary, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, mode));
    if (file && number % 64 == 0) RemoveStaleFiles(folder);
  } while (!file && errno == EEXIST);
  if (!file) {
    temporary.clear();
    inPlace = exists && (errno == EACCES || errno == EPERM || errno == EROFS);
    if (!inPlace) Raise();
  } else if (exists && !TakeOverOwnerAndMode()) {
    Abandon();
    inPlace = true;
  }
}

/// Before anything is written, so that a file this user may not write either is noticed as early
/// as one that cannot be created.
void TReplacingFile::TState::OpenTarget() {
  file.Reset(OpenFile(target, O_WRONLY));
  if (!file) Raise();
}

/// False when the system does not let this user make such a file.
bool TReplacingFile::TState::TakeOverOwnerAndMode() {
  struct stat made;
  if (StatOpenFile(file.Get(), made) != 0) return false;
  const bool sameOwner = made.st_uid == old.st_uid && made.st_gid == old.st_gid;
  if (!sameOwner && ChangeOpenFileOwner(file.Get(), old.st_uid, old.st_gid) != 0) return false;
  const bool sameMode = (made.st_mode & kModeBits) == (old.st_mode & kModeBits);
  return (sameMode && sameOwner) || ChangeOpenFileMode(file.Get(), old.st_mode & kModeBits) == 0;
}

void TReplacingFile::TState::Abandon() noexcept {
  file.Reset(-1);
  if (!temporary.empty()) UnlinkPath(temporary);
  temporary.clear();
}

void TReplacingFile::TState::WriteOut(const void* data, size_t size) {
  if (WriteAll(file.Get(), data, size) != 0) Raise();
}

void TReplacingFile::TState::RenameIntoPlace() {
  WriteOut(buffer.data(), buffer.size());
  if (flushed && FlushFile(file.Get()) != 0) Raise();
  if (file.Close() != 0) Raise();
  if (!SwapIntoPlace() && RenamePath(temporary, target) != 0) Raise();
  temporary.clear();
  if (flushed) FlushFolder();
}

/// When a name is taken over from a file, file systems write the new content out first, which costs
/// more than all the rest. Two files that swap their names are left alone.
bool TReplacingFile::TState::SwapIntoPlace() {
  if (!passing || !exists || ExchangePaths(temporary, target) != 0) return false;
  UnlinkPath(temporary);
  return true;
}

/// The rename should reach the disk soon. It is done by now, so a failure here is none of the
/// whole: whoever heard of one would believe that the old content is still there.
void TReplacingFile::TState::FlushFolder() const noexcept {
  const TDescriptor folder(OpenFile(FolderOf(target), O_RDONLY | O_DIRECTORY));
  if (folder) FlushFile(folder.Get());
}

/// Takes the room first, so that a full disk is noticed while the old content is still whole.
void TReplacingFile::TState::WriteInPlace() {
  if (S_ISREG(old.st_mode) && ReserveRoom(file.Get(), buffer.size()) != 0) {
    const int code = errno;
    if (ResizeFile(file.Get(), static_cast<uint64_t>(old.st_size)) != 0) errno = code;
    Raise(code);
  }
  WriteOut(buffer.data(), buffer.size());
  if (S_ISREG(old.st_mode) && ResizeFile(file.Get(), buffer.size()) != 0) Raise();
  if (flushed && FlushFile(file.Get()) != 0) Raise();
  if (file.Close() != 0) Raise();
}

TReplacingFile::TReplacingFile(std::string_view path, TDurability durability)
    : state_(std::make_unique<TState>(path, durability)) {
  state_->FindTarget();
  if (state_->exists && !S_ISREG(state_->old.st_mode)) {
    state_->inPlace = true;  // a device or pipe keeps its nature
  } else {
    state_->CreateTemporary();
  }
  if (state_->inPlace) state_->OpenTarget();
}

TReplacingFile::~TReplacingFile() = default;

void TReplacingFile::Write(const void* data, size_t size) {
  TState& state = *state_;
  if (state.done) state.Raise(EBADF);
  const size_t limit = state.inPlace ? SIZE_MAX : kBufferSize;
  const auto writeOut = [&state](const void* rest, size_t count) { state.WriteOut(rest, count); };
  WriteBuffered(state.buffer, data, size, limit, writeOut);
}

void TReplacingFile::Commit() {
  TState& state = *state_;
  if (state.done) state.Raise(EBADF);
  state.done = true;
  state.inPlace ? state.WriteInPlace() : state.RenameIntoPlace();
}

}  // namespace quarda::platform
