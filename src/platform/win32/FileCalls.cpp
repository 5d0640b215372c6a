#include "FileCalls.h"

#include <sddl.h>

#include <algorithm>
#include <memory>

#include "Paths.h"

namespace quarda::platform::win32 {
namespace {

struct TFreeLocal {
  void operator()(void* memory) const noexcept { ::LocalFree(memory); }
};
using TDescriptor = std::unique_ptr<void, TFreeLocal>;

/// All rights for the owner, the system and the administrators, and for nobody else.
TDescriptor PrivateDescriptor() noexcept {
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  ::ConvertStringSecurityDescriptorToSecurityDescriptorA("D:P(A;;FA;;;OW)(A;;FA;;;SY)(A;;FA;;;BA)",
                                                         SDDL_REVISION_1, &descriptor, nullptr);
  return TDescriptor(descriptor);
}

}  // namespace

HANDLE OpenFile(const std::string& path, DWORD access, DWORD disposition, DWORD sharing,
                DWORD flags) noexcept {
  return ::CreateFileA(path.c_str(), access, sharing, nullptr, disposition, flags, nullptr);
}

HANDLE CreatePrivateFile(const std::string& path) noexcept {
  const TDescriptor descriptor = PrivateDescriptor();
  if (descriptor == nullptr) return INVALID_HANDLE_VALUE;
  SECURITY_ATTRIBUTES security{sizeof security, descriptor.get(), FALSE};
  return ::CreateFileA(path.c_str(), GENERIC_WRITE, kShareAll, &security, CREATE_NEW,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

bool WriteAll(HANDLE file, const void* data, size_t size) noexcept {
  const char* rest = static_cast<const char*>(data);
  while (size > 0) {
    DWORD written = 0;
    const auto wanted = static_cast<DWORD>(std::min(size, kLargestTransfer));
    if (!::WriteFile(file, rest, wanted, &written, nullptr)) return false;
    rest += written;
    size -= written;
  }
  return true;
}

bool SeekFile(HANDLE file, uint64_t offset) noexcept {
  LARGE_INTEGER position{};
  position.QuadPart = static_cast<LONGLONG>(offset);
  return ::SetFilePointerEx(file, position, nullptr, FILE_BEGIN) != 0;
}

bool ResizeFile(HANDLE file, uint64_t size) noexcept {
  return SeekFile(file, size) && ::SetEndOfFile(file) != 0;
}

DWORD AttributesOf(std::string_view path) {
  const std::optional<std::string> name = SystemPath(path);
  return name ? ::GetFileAttributesA(name->c_str()) : INVALID_FILE_ATTRIBUTES;
}

}  // namespace quarda::platform::win32
