// A named object is a file in the runtime folder. Every process that has it open holds a shared
// lock on it, which the system drops when the process ends: a file that nobody has locked is what a
// dead process left behind, and no object.
#include "NamedObjects.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/mman.h>

#include <cerrno>
#include <ctime>
#include <optional>
#include <string>
#include <utility>

#include "FileCalls.h"
#include "HashText.h"
#include "PlatformError.h"
#include "RuntimeFolder.h"

namespace quarda::platform {

using namespace posix;

namespace {

[[noreturn]] void Raise(std::string_view name) { throw EPlatformError(LastErrorCode(), name); }
[[noreturn]] void Raise(std::string_view name, int code) {
  throw EPlatformError(static_cast<uint32_t>(code), name);
}

/// The name of an object's file: one that the file system takes, and that leads nowhere else,
/// whatever the name of the object is.
std::string FileName(std::string_view name, std::string_view kind) {
  constexpr size_t kLongest = 200;
  constexpr const char* kDigits = "0123456789ABCDEF";
  std::string result;
  for (const char c : name) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte > ' ' && byte < 0x7F && c != '/' && c != '%') {
      result += c;
    } else {
      result.append({'%', kDigits[byte >> 4], kDigits[byte & 15]});
    }
  }
  if (result.size() > kLongest) {
    const std::string hash = HashText(name);
    result.replace(kLongest, std::string::npos, "%%").append(hash);
  }
  return result.append(kind);
}

/// The file of an object, opened under the lock that the caller holds. Who has the object open has
/// locked the file, so one that nobody has locked is no object.
class TObjectFile {
 public:
  TObjectFile(const TRuntimeLock& lock, std::string_view name, std::string_view kind, bool create)
      : path_(lock.Path(FileName(name, kind))),
        file_(OpenFile(path_, O_RDWR | O_NOFOLLOW | (create ? O_CREAT : 0), 0600)) {
    if (!file_) {
      if (create || errno != ENOENT) Raise(name);
      return;
    }
    existed_ = !LockAlone();
    if (!existed_ && !create) {
      Remove();
    } else if (::flock(file_.Get(), LOCK_SH) != 0) {
      Raise(name);
    }
  }
  TObjectFile(const TObjectFile&) = delete;
  TObjectFile& operator=(const TObjectFile&) = delete;

  /// Removes and closes the file when nobody else has it open; only to be called in the end.
  void RemoveIfLast() noexcept {
    try {
      if (!file_ || !LockAlone()) return;
      ::flock(file_.Get(), LOCK_UN);  // whoever has the runtime lock may be waiting for this one
      const TRuntimeLock lock;
      if (LockAlone() && HasItsName()) Remove();
    } catch (const EPlatformError&) {  // the file stays, and counts for nothing
    }
  }
  void Remove() noexcept {
    UnlinkPath(path_);
    file_.Reset(-1);
  }

  bool IsOpen() const noexcept { return static_cast<bool>(file_); }
  bool Existed() const noexcept { return existed_; }
  int Get() const noexcept { return file_.Get(); }

 private:
  /// False when somebody else has the file locked.
  bool LockAlone() const {
    if (::flock(file_.Get(), LOCK_EX | LOCK_NB) == 0) return true;
    if (errno != EWOULDBLOCK) Raise(path_);
    return false;
  }

  /// False when the file was removed, and perhaps another one made, while nobody had it locked.
  bool HasItsName() const noexcept {
    struct stat named;
    struct stat own;
    return StatLink(path_, named) == 0 && StatOpenFile(file_.Get(), own) == 0 &&
           named.st_dev == own.st_dev && named.st_ino == own.st_ino;
  }

  std::string path_;
  TDescriptor file_;
  bool existed_ = false;
};

/// Gives a new object its size, filled with zeros. Without the room for it, memory that is mapped
/// would be missing at the first touch, which ends the process; so the room is taken now.
void MakeRoom(TObjectFile& file, std::string_view name, size_t size) {
  if (ResizeFile(file.Get(), 0) == 0 && ReserveRoom(file.Get(), size) == 0 &&
      ResizeFile(file.Get(), size) == 0) {
    return;
  }
  const auto code = static_cast<int>(LastErrorCode());
  file.Remove();
  Raise(name, code);
}

/// A mapped file, unmapped by the destructor.
class TView {
 public:
  TView(const TObjectFile& file, std::string_view name, size_t size, int protection, int sharing)
      : size_(size), address_(::mmap(nullptr, size, protection, sharing, file.Get(), 0)) {
    if (address_ == MAP_FAILED) Raise(name);
  }
  TView(const TView&) = delete;
  TView& operator=(const TView&) = delete;
  ~TView() { ::munmap(address_, size_); }

  void* Get() const noexcept { return address_; }

 private:
  size_t size_;
  void* address_;
};

size_t SizeOf(const TObjectFile& file, std::string_view name) {
  struct stat info;
  if (StatOpenFile(file.Get(), info) != 0) Raise(name);
  return static_cast<size_t>(info.st_size);
}

/// Shared between processes, and told when an owner dies.
int InitMutex(pthread_mutex_t* mutex) noexcept {
  pthread_mutexattr_t kind;
  ::pthread_mutexattr_init(&kind);
  ::pthread_mutexattr_setpshared(&kind, PTHREAD_PROCESS_SHARED);
  ::pthread_mutexattr_setrobust(&kind, PTHREAD_MUTEX_ROBUST);
  ::pthread_mutexattr_settype(&kind, PTHREAD_MUTEX_RECURSIVE);
  const int result = ::pthread_mutex_init(mutex, &kind);
  ::pthread_mutexattr_destroy(&kind);
  return result;
}

timespec After(uint32_t milliseconds) noexcept {
  timespec time{};
  ::clock_gettime(CLOCK_MONOTONIC, &time);
  time.tv_sec += static_cast<time_t>(milliseconds / 1000);
  time.tv_nsec += static_cast<long>(milliseconds % 1000) * 1'000'000;
  if (time.tv_nsec >= 1'000'000'000) {
    ++time.tv_sec;
    time.tv_nsec -= 1'000'000'000;
  }
  return time;
}

}  // namespace

// The file of a mutex stays for the next who opens it: requests make the same two again and again.
struct TNamedMutex::TState {
  explicit TState(std::string_view given) : TState(given, TRuntimeLock()) {}
  TState(std::string_view given, const TRuntimeLock& lock)
      : name(given), file(lock, given, ".mutex", true) {
    constexpr size_t kSize = sizeof(pthread_mutex_t);
    if (SizeOf(file, name) != kSize) {
      if (file.Existed()) Raise(name, EINVAL);
      MakeRoom(file, name, kSize);
    }
    view.emplace(file, name, kSize, PROT_READ | PROT_WRITE, MAP_SHARED);
    if (!file.Existed()) {
      if (const int code = InitMutex(Mutex())) Raise(name, code);
    }
  }

  pthread_mutex_t* Mutex() const noexcept { return static_cast<pthread_mutex_t*>(view->Get()); }

  std::string name;
  TObjectFile file;
  std::optional<TView> view;
  int owned = 0;
};

TNamedMutex::TNamedMutex(std::string_view name) : state_(std::make_unique<TState>(name)) {}

TNamedMutex::~TNamedMutex() {
  while (state_->owned > 0) Release();
}

bool TNamedMutex::Existed() const noexcept { return state_->file.Existed(); }

TWaitResult TNamedMutex::Wait(uint32_t milliseconds) {
  const timespec end = After(milliseconds);
  const int result = ::pthread_mutex_clocklock(state_->Mutex(), CLOCK_MONOTONIC, &end);
  if (result == ETIMEDOUT) return TWaitResult::kTimeOut;
  if (result != 0 && result != EOWNERDEAD) Raise(state_->name, result);
  if (result == EOWNERDEAD) ::pthread_mutex_consistent(state_->Mutex());
  ++state_->owned;
  return result == 0 ? TWaitResult::kOwned : TWaitResult::kAbandoned;
}

void TNamedMutex::Release() noexcept {
  if (state_->owned == 0) return;
  --state_->owned;
  ::pthread_mutex_unlock(state_->Mutex());
}

struct TNamedMemory::TState {
  TState(std::string_view name, size_t size, uint32_t access)
      : TState(TRuntimeLock(), name, size, access) {}
  TState(const TRuntimeLock& lock, std::string_view name, size_t size, uint32_t access)
      : file(lock, name, ".memory", size > 0) {
    if (!file.IsOpen()) return;
    if (!file.Existed()) MakeRoom(file, name, size);
    const size_t whole = SizeOf(file, name);
    if (size > whole || whole == 0) Raise(name, EACCES);
    const bool isCopy = (access & kMemoryCopy) != 0 && (access & kMemoryWrite) == 0;
    const int write = (access & (kMemoryCopy | kMemoryWrite)) != 0 ? PROT_WRITE : 0;
    view.emplace(file, name, size > 0 ? size : whole, PROT_READ | write,
                 isCopy ? MAP_PRIVATE : MAP_SHARED);
  }

  TObjectFile file;
  std::optional<TView> view;
};

TNamedMemory::TNamedMemory(std::string_view name, size_t size, uint32_t access)
    : state_(std::make_unique<TState>(name, size, access)) {}

TNamedMemory::TNamedMemory(TNamedMemory&& other) noexcept = default;

TNamedMemory::~TNamedMemory() {
  if (state_) state_->file.RemoveIfLast();
}

bool TNamedMemory::Existed() const noexcept { return state_->file.Existed(); }

void* TNamedMemory::Address() const noexcept {
  return state_->view ? state_->view->Get() : nullptr;
}

}  // namespace quarda::platform
