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
#include "PlatformError.h"
#include "RuntimeFolder.h"

namespace quarda::platform {

using namespace posix;

namespace {

[[noreturn]] void Raise(std::string_view name) { throw EPlatformError(LastErrorCode(), name); }
[[noreturn]] void Raise(std::string_view name, int code) {
  throw EPlatformError(static_cast<uint32_t>(code), name);
}

/// The file of an object, opened under the lock that the caller holds.
class TObjectFile {
 public:
  TObjectFile(std::string_view name, std::string_view kind, bool create)
      : path_(RuntimePath(std::string(name).append(kind))),
        file_(OpenFile(path_, O_RDWR | O_NOFOLLOW | (create ? O_CREAT : 0), 0600)) {
    if (!file_) {
      if (create || errno != ENOENT) Raise(name);
      return;
    }
    existed_ = ::flock(file_.Get(), LOCK_EX | LOCK_NB) != 0;
    if (!existed_ && !create) {
      Remove();
    } else if (::flock(file_.Get(), LOCK_SH) != 0 || (!existed_ && ResizeFile(Get(), 0) != 0)) {
      Raise(name);
    }
  }
  TObjectFile(const TObjectFile&) = delete;
  TObjectFile& operator=(const TObjectFile&) = delete;

  /// Closes the file; that of an object which nobody else has open goes with it.
  void Close() noexcept {
    try {
      const TRuntimeLock lock;
      if (file_ && ::flock(file_.Get(), LOCK_EX | LOCK_NB) == 0) Remove();
    } catch (const EPlatformError&) {  // the file stays, and counts for nothing
    }
  }

  bool IsOpen() const noexcept { return static_cast<bool>(file_); }
  bool Existed() const noexcept { return existed_; }
  int Get() const noexcept { return file_.Get(); }

 private:
  void Remove() noexcept {
    UnlinkPath(path_);
    file_.Reset(-1);
  }

  std::string path_;
  TDescriptor file_;
  bool existed_ = false;
};

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

struct TNamedMutex::TState {
  explicit TState(std::string_view given) : name(given), file(given, ".mutex", true) {
    if (!file.Existed() && ResizeFile(file.Get(), sizeof(pthread_mutex_t)) != 0) Raise(name);
    if (SizeOf(file, name) != sizeof(pthread_mutex_t)) Raise(name, EINVAL);
    view.emplace(file, name, sizeof(pthread_mutex_t), PROT_READ | PROT_WRITE, MAP_SHARED);
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

TNamedMutex::TNamedMutex(std::string_view name) {
  const TRuntimeLock lock;
  state_ = std::make_unique<TState>(name);
}

TNamedMutex::~TNamedMutex() {
  while (state_->owned > 0) Release();
  state_->file.Close();
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
  TState(std::string_view name, size_t size, uint32_t access) : file(name, ".memory", size > 0) {
    if (!file.IsOpen()) return;
    if (!file.Existed() && ResizeFile(file.Get(), size) != 0) Raise(name);
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

TNamedMemory::TNamedMemory(std::string_view name, size_t size, uint32_t access) {
  const TRuntimeLock lock;
  state_ = std::make_unique<TState>(name, size, access);
}

TNamedMemory::TNamedMemory(TNamedMemory&& other) noexcept = default;

TNamedMemory::~TNamedMemory() {
  if (state_) state_->file.Close();
}

bool TNamedMemory::Existed() const noexcept { return state_->file.Existed(); }

void* TNamedMemory::Address() const noexcept {
  return state_->view ? state_->view->Get() : nullptr;
}

}  // namespace quarda::platform
