// Physical memory.
#pragma once

#include <cstddef>
#include <cstdint>

namespace quarda::platform {

/// Bytes of physical memory that are available now.
uint64_t AvailablePhysicalMemory() noexcept;

/// Says that this memory is about to be filled, so that the system provides it in one go and not
/// page by page as it is touched. Only a hint; contents stay.
void ProvideMemory(void* start, size_t size) noexcept;

}  // namespace quarda::platform
