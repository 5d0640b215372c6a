// Memory blocks that processes share by name, handed out as plain addresses. The unit remembers
// every block that this process has open; what is still open when the engine is unloaded is closed
// then.
#pragma once

#include <Errors.h>

#include <cstdint>
#include <string_view>

namespace quarda {

/// A name that cannot be that of a block, or one that this process has open already.
class ESharedMemError : public EError {
 public:
  using EError::EError;
  const char* ClassName() const noexcept override { return "ESharedMemError"; }
};

/// What `SharedGetMem` returns for a block that existed before.
inline constexpr uint32_t kSharedMemExisted = 183;

/// Opens the block of that name, or creates it with `size` bytes. With a size of 0 nothing is
/// created and the whole of an existing block is mapped; `block` is null when there is none.
/// `access` is a mask of platform::TMemoryAccess. Returns `kSharedMemExisted` or 0. Raises
/// ESharedMemError, and EPlatformError when the system refuses.
uint32_t SharedGetMem(void*& block, std::string_view name, uint32_t size, uint32_t access);
/// The same; a block that this call created and may write to is filled with zeros.
void* SharedAllocMem(std::string_view name, uint32_t size, uint32_t access);
/// Opens an existing block; false (or null) when there is none.
bool SharedOpenMem(void*& block, std::string_view name, uint32_t access);
void* SharedOpenMem(std::string_view name, uint32_t access);
/// Closes a block that this process has open and sets the address to null; false for any other
/// address.
bool SharedFreeMem(void*& block) noexcept;
bool SharedCloseMem(void*& block) noexcept;

}  // namespace quarda
