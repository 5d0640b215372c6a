// Calls to the file system that take more than one step.
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

/// How much could be written; the system's last error tells why that is not all.
size_t WritePart(HANDLE file, const void* data, size_t size) noexcept {
  const char* rest = static_cast<const char*>(data);
  size_t done = 0;
  while (done < size) {
    DWORD written = 0;
    const auto wanted = static_cast<DWORD>(std::min(size - done, kLargestTransfer));
    if (!::WriteFile(file, rest + done, wanted, &written, nullptr)) break;
    done += written;
  }
  return done;
}

/// Whether the file has these bytes from there on.
bool Holds(HANDLE file, uint64_t offset, std::string_view bytes) noexcept {
  char buffer[4096];
  if (!SeekFile(file, offset)) return false;
  for (DWORD count = 0; !bytes.empty(); bytes.remove_prefix(count)) {
    const auto wanted = static_cast<DWORD>(std::min(bytes.size(), sizeof buffer));
    if (!::ReadFile(file, buffer, wanted, &count, nullptr) || count == 0 ||
        bytes.substr(0, count) != std::string_view(buffer, count)) {
      return false;
    }
  }
  return true;
}

/// Cuts these bytes off the end of the file, unless another process has appended behind them. A
/// handle that appends may do nothing else, so the file is opened once more.
void TakeBack(HANDLE file, std::string_view bytes) noexcept {
  if (bytes.empty()) return;
  const THandle whole(::ReOpenFile(file, GENERIC_READ | GENERIC_WRITE, kShareAll, 0));
  LARGE_INTEGER end{};
  if (!whole || !::GetFileSizeEx(whole.Get(), &end)) return;
  const auto size = static_cast<uint64_t>(end.QuadPart);
  if (size < bytes.size() || !Holds(whole.Get(), size - bytes.size(), bytes)) return;
  ResizeFile(whole.Get(), size - bytes.size());
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
  return WritePart(file, data, size) == size;
}

bool WriteOrTakeBack(HANDLE file, const void* data, size_t size) noexcept {
  const size_t written = WritePart(file, data, size);
  if (written == size) return true;
  const DWORD code = ::GetLastError();
  TakeBack(file, {static_cast<const char*>(data), written});
  ::SetLastError(code);
  return false;
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
