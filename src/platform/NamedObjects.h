// Mutexes and memory blocks that processes of one user share by name. An object lives as long as
// some process has it open, however its processes end. Every failing call raises EPlatformError.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace quarda::platform {

enum class TWaitResult {
  kOwned,
  kTimeOut,
  kAbandoned,  ///< owned, but the owner before died while it had the mutex
};

/// A mutex; created unowned when it does not exist yet. Given up and closed by the destructor.
class TNamedMutex {
 public:
  explicit TNamedMutex(std::string_view name);
  TNamedMutex(const TNamedMutex&) = delete;
  TNamedMutex& operator=(const TNamedMutex&) = delete;
  ~TNamedMutex();

  /// Whether some process had it open already.
  bool Existed() const noexcept;
  TWaitResult Wait(uint32_t milliseconds);
  /// Gives up the mutex, which this object must own.
  void Release() noexcept;

 private:
  struct TState;
  std::unique_ptr<TState> state_;
};

/// What a view of a block may do; bits of one mask.
enum TMemoryAccess : uint32_t {
  kMemoryCopy = 0x1,  ///< read, and write to a copy that nobody else sees
  kMemoryWrite = 0x2,
  kMemoryRead = 0x4,
  kMemoryAll = 0xF001F,
};

/// One view of a block of memory, unmapped and closed by the destructor. A new block is filled with
/// zeros.
class TNamedMemory {
 public:
  /// Opens the block, or creates it with `size` bytes; a size of 0 creates nothing and maps all
  /// of a block that exists. `Address` is null when there was nothing to open.
  TNamedMemory(std::string_view name, size_t size, uint32_t access);
  TNamedMemory(TNamedMemory&& other) noexcept;
  TNamedMemory& operator=(TNamedMemory&&) = delete;
  ~TNamedMemory();

  bool Existed() const noexcept;
  void* Address() const noexcept;

 private:
  struct TState;
  std::unique_ptr<TState> state_;
};

}  // namespace quarda::platform
