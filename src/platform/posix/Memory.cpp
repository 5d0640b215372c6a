#include "Memory.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/sysinfo.h>
#include <unistd.h>

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
  return std::max(free, OrElse(uint64_t{0}, EstimateWithCaches));
}

// A system that knows one of the two hints only follows that one.
void ProvideMemory(void* start, size_t size) noexcept {
  constexpr int kPopulateForWriting = 23;  // MADV_POPULATE_WRITE, younger than the headers may be
  const auto page = static_cast<uintptr_t>(::sysconf(_SC_PAGESIZE));
  const uintptr_t begin = (reinterpret_cast<uintptr_t>(start) + page - 1) / page * page;
  const uintptr_t end = (reinterpret_cast<uintptr_t>(start) + size) / page * page;
  if (begin >= end) return;
  for (const int hint : {MADV_HUGEPAGE, kPopulateForWriting}) {
    ::madvise(reinterpret_cast<void*>(begin), end - begin, hint);
  }
}

}  // namespace quarda::platform
