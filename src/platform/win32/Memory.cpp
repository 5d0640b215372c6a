// Physical memory as the system counts it for this process.
#include "Memory.h"

#include "System.h"

namespace quarda::platform {

// More than fits into the answer reads as the largest amount there, which for a program of 32 bits
// is all that it can ever use.
uint64_t AvailablePhysicalMemory() noexcept {
  MEMORYSTATUS status{};
  status.dwLength = sizeof status;
  ::GlobalMemoryStatus(&status);
  return status.dwAvailPhys;
}

// The system has no hint that fits: fetching pages ahead is offered for mapped files only.
void ProvideMemory(void*, size_t) noexcept {}

}  // namespace quarda::platform
