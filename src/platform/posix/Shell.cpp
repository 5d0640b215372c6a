#include "Shell.h"

#include <fcntl.h>

#include <array>

#include "ExecutableHeader.h"
#include "FileCalls.h"
#include "Paths.h"
#include "Quiet.h"

namespace quarda::platform {

using namespace posix;

namespace {

/// A plain file opened for reading; never waits for the other end of a pipe.
int OpenPlainFile(std::string_view path) {
  return OnExisting(path, [](const std::string& native) {
    const int file = OpenFile(native, O_RDONLY | O_NONBLOCK);
    struct stat info;
    if (file < 0 || (StatOpenFile(file, info) == 0 && S_ISREG(info.st_mode))) return file;
    CloseFile(file);
    errno = EACCES;
    return -1;
  });
}

template <size_t kSize>
std::string_view ReadAt(int file, uint64_t offset, std::array<char, kSize>& buffer) {
  const ssize_t size = ReadSomeAt(file, buffer.data(), kSize, offset);
  return {buffer.data(), size > 0 ? static_cast<size_t>(size) : 0};
}

}  // namespace

uint32_t ExecutableType(std::string_view path, std::string_view name) noexcept {
  return OrElse(uint32_t{0}, [&]() -> uint32_t {
    const TProgramKind kind = ProgramKindOf(name);
    if (kind == TProgramKind::kNone) return 0;
    const TDescriptor file(OpenPlainFile(path));
    if (!file) return 0;
    if (kind == TProgramKind::kCommand) return kDosProgram;
    std::array<char, kOldHeaderSize> start;
    std::array<char, kNewHeaderSize> header;
    const std::optional<uint32_t> offset = NewHeaderOffset(ReadAt(file.Get(), 0, start));
    if (!offset) return 0;
    return ExecutableTypeOf(*offset == 0 ? std::string_view()
                                         : ReadAt(file.Get(), *offset, header));
  });
}

}  // namespace quarda::platform
