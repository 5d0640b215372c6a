// The shell answers by the file's own name, and its answer differs between versions of the system:
// the headers are read here as on the other system.
#include "Shell.h"

#include <array>

#include "ExecutableHeader.h"
#include "FileCalls.h"
#include "Files.h"
#include "Paths.h"
#include "Quiet.h"

namespace quarda::platform {

using namespace win32;

namespace {

template <size_t kSize>
std::string_view ReadAt(HANDLE file, uint64_t offset, std::array<char, kSize>& buffer) {
  DWORD size = 0;
  if (!SeekFile(file, offset) || !::ReadFile(file, buffer.data(), kSize, &size, nullptr)) size = 0;
  return {buffer.data(), size};
}

}  // namespace

uint32_t ExecutableType(std::string_view path, std::string_view name) noexcept {
  return OrElse(uint32_t{0}, [&]() -> uint32_t {
    const TProgramKind kind = ProgramKindOf(name);
    const std::optional<std::string> given = SystemPath(path);
    if (kind == TProgramKind::kNone || !given || !FileExists(path)) return 0;
    if (kind == TProgramKind::kCommand) return kDosProgram;
    const THandle file(OpenFile(*given, GENERIC_READ, OPEN_EXISTING));
    if (!file) return 0;
    std::array<char, kOldHeaderSize> start;
    std::array<char, kNewHeaderSize> header;
    const std::optional<uint32_t> offset = NewHeaderOffset(ReadAt(file.Get(), 0, start));
    if (!offset) return 0;
    return ExecutableTypeOf(*offset == 0 ? std::string_view()
                                         : ReadAt(file.Get(), *offset, header));
  });
}

}  // namespace quarda::platform
