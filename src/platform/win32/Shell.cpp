// The shell is asked about a file that has the extension of a program. It answers by the file's own
// name only; to give a stranger's file the name of a program for the question, be it for a moment
// or through a link, would put something that runs where nothing was. Where the answer is wanted
// for another name the headers are therefore read here, as on the other system, and also where the
// shell has none: not every version of it knows batch files, and a program that it does not know
// must not pass for a text.
//
// The shell's library is loaded when it is first needed: most scans never ask, and it brings many
// others along.
#include "Shell.h"

#include "System.h"
// The shell's header needs the one above.
#include <shellapi.h>

#include <array>

#include "CodePage.h"
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

std::string_view ExtensionOf(std::string_view path) noexcept {
  const std::string_view name = path.substr(NameStart(path));
  return name.substr(std::min(name.size(), name.rfind('.')));
}

auto FindShellFunction() noexcept {
  const HMODULE shell = ::LoadLibraryExA("shell32.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
  void* const function = shell == nullptr
                             ? nullptr
                             : reinterpret_cast<void*>(::GetProcAddress(shell, "SHGetFileInfoA"));
  return reinterpret_cast<decltype(&::SHGetFileInfoA)>(function);
}

/// 0 when the shell knows no program in the file.
uint32_t AskShell(const std::string& path) noexcept {
  static const auto getFileInfo = FindShellFunction();
  if (getFileInfo == nullptr) return 0;
  SHFILEINFOA unused{};
  const auto type =
      static_cast<uint32_t>(getFileInfo(path.c_str(), 0, &unused, sizeof unused, SHGFI_EXETYPE));
  constexpr uint32_t kSwapped = 'Z' | 'M' << 8;  // so Wine names the programs of MS-DOS
  return type == kSwapped ? kDosProgram : type;
}

uint32_t TypeByHeaders(const std::string& path) noexcept {
  const THandle file(OpenFile(path, GENERIC_READ, OPEN_EXISTING));
  if (!file) return 0;
  std::array<char, kOldHeaderSize> start;
  std::array<char, kNewHeaderSize> header;
  const std::optional<uint32_t> offset = NewHeaderOffset(ReadAt(file.Get(), 0, start));
  if (!offset) return 0;
  return ExecutableTypeOf(*offset == 0 ? std::string_view() : ReadAt(file.Get(), *offset, header));
}

}  // namespace

uint32_t ExecutableType(std::string_view path, std::string_view name) noexcept {
  return OrElse(uint32_t{0}, [&]() -> uint32_t {
    const TProgramKind kind = ProgramKindOf(name);
    const std::optional<std::string> given = SystemPath(path);
    if (kind == TProgramKind::kNone || !given || !FileExists(path)) return 0;
    const bool ownName = SameAnsiText(ExtensionOf(path), ExtensionOf(name));
    if (const uint32_t type = ownName ? AskShell(*given) : 0; type != 0) return type;
    return kind == TProgramKind::kCommand ? kDosProgram : TypeByHeaders(*given);
  });
}

}  // namespace quarda::platform
