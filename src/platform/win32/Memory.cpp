#include "Memory.h"

#include "System.h"

namespace quarda::platform {

uint64_t AvailablePhysicalMemory() noexcept {
  MEMORYSTATUSEX status{};
  status.dwLength = sizeof status;
  return ::GlobalMemoryStatusEx(&status) ? status.ullAvailPhys : 0;
}

// The system has no hint that fits: fetching pages ahead is offered for mapped files only.
void ProvideMemory(void*, size_t) noexcept {}

}  // namespace quarda::platform
