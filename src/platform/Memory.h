// Physical memory.
#pragma once

#include <cstdint>

namespace quarda::platform {

/// Bytes of physical memory that are available now.
uint64_t AvailablePhysicalMemory() noexcept;

}  // namespace quarda::platform
