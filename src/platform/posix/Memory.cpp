#include "Memory.h"

#include <fcntl.h>
#include <sys/sysinfo.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <string>
#include <string_view>

#include "FileCalls.h"
#include "Quiet.h"

namespace quarda::platform {
namespace {

/// The kernel's estimate, which counts the caches it could drop.
uint64_t EstimateWithCaches() {
  constexpr std::string_view kLabel = "MemAvailable:";
  std::array<char, 512> buffer;  // the line is the third one
  const posix::TDescriptor file(posix::OpenFile("/proc/meminfo", O_RDONLY));
  const ssize_t size = file ? posix::ReadSome(file.Get(), buffer.data(), buffer.size()) : 0;
  const std::string_view text(buffer.data(), size > 0 ? static_cast<size_t>(size) : 0);
  size_t at = text.find(kLabel);
  if (at == std::string_view::npos) return 0;
  at = text.find_first_not_of(' ', at + kLabel.size());
  if (at == std::string_view::npos) return 0;
  uint64_t kilobytes = 0;
  std::from_chars(text.data() + at, text.data() + text.size(), kilobytes);
  return kilobytes * 1024;
}

}  // namespace

// Memory that is free at this moment is cheap to ask for and nearly always enough for the caller's
// question; the better estimate costs a file that the kernel has to compute.
uint64_t AvailablePhysicalMemory() noexcept {
  constexpr uint64_t kEnough = 256ull << 20;
  struct sysinfo info {};
  const uint64_t free = ::sysinfo(&info) == 0 ? uint64_t{info.freeram} * info.mem_unit : 0;
  if (free >= kEnough) return free;
  return std::max(free, posix::OrElse(uint64_t{0}, EstimateWithCaches));
}

}  // namespace quarda::platform
