// The system's own objects; it forgets one with the last process that has it open.
#include "NamedObjects.h"

#include <string>

#include "PlatformError.h"
#include "System.h"

namespace quarda::platform {

using namespace win32;

namespace {

[[noreturn]] void Raise(std::string_view name) { throw EPlatformError(LastErrorCode(), name); }

}  // namespace

struct TNamedMutex::TState {
  explicit TState(std::string_view given)
      : name(given), mutex(::CreateMutexA(nullptr, FALSE, name.c_str())) {
    existed = ::GetLastError() == ERROR_ALREADY_EXISTS;
    if (!mutex) Raise(name);
  }

  std::string name;
  THandle mutex;
  bool existed = false;
  int owned = 0;
};

TNamedMutex::TNamedMutex(std::string_view name) : state_(std::make_unique<TState>(name)) {}

TNamedMutex::~TNamedMutex() {
  while (state_->owned > 0) Release();
}

bool TNamedMutex::Existed() const noexcept { return state_->existed; }

TWaitResult TNamedMutex::Wait(uint32_t milliseconds) {
  const DWORD result = ::WaitForSingleObject(state_->mutex.Get(), milliseconds);
  if (result == WAIT_TIMEOUT) return TWaitResult::kTimeOut;
  if (result != WAIT_OBJECT_0 && result != WAIT_ABANDONED) Raise(state_->name);
  ++state_->owned;
  return result == WAIT_OBJECT_0 ? TWaitResult::kOwned : TWaitResult::kAbandoned;
}

void TNamedMutex::Release() noexcept {
  if (state_->owned == 0) return;
  --state_->owned;
  ::ReleaseMutex(state_->mutex.Get());
}

struct TNamedMemory::TState {
  TState(const std::string& name, size_t size, uint32_t access);
  TState(const TState&) = delete;
  TState& operator=(const TState&) = delete;
  ~TState() {
    if (address != nullptr) ::UnmapViewOfFile(address);
  }

  THandle mapping;
  bool existed = false;
  void* address = nullptr;
};

TNamedMemory::TState::TState(const std::string& name, size_t size, uint32_t access)
    : mapping(::OpenFileMappingA(access, FALSE, name.c_str())), existed(mapping) {
  if (!mapping && size == 0) return;
  if (!mapping) {
    const uint64_t wanted = size;
    mapping = THandle(::CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE,
                                           static_cast<DWORD>(wanted >> 32),
                                           static_cast<DWORD>(wanted), name.c_str()));
    existed = ::GetLastError() == ERROR_ALREADY_EXISTS;  // another process was faster
    if (!mapping) Raise(name);
  }
  address = ::MapViewOfFile(mapping.Get(), access, 0, 0, size);
  if (address == nullptr) Raise(name);
}

TNamedMemory::TNamedMemory(std::string_view name, size_t size, uint32_t access)
    : state_(std::make_unique<TState>(std::string(name), size, access)) {}

TNamedMemory::TNamedMemory(TNamedMemory&& other) noexcept = default;

TNamedMemory::~TNamedMemory() = default;

bool TNamedMemory::Existed() const noexcept { return state_->existed; }

void* TNamedMemory::Address() const noexcept { return state_->address; }

}  // namespace quarda::platform
