// Paths need no translation here; what is kept out are names that open a device instead of a file.
#include "Paths.h"

#include "Files.h"
#include "Program.h"
#include "System.h"

namespace quarda::platform {
namespace win32 {
namespace {

bool IsSlash(char c) { return c == '\\' || c == '/'; }

bool IsLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

std::string FullName(const std::string& path) {
  return TextOf([&](char* text, DWORD size) {
    return ::GetFullPathNameA(path.c_str(), size, text, nullptr);
  });
}

bool IsDevice(const std::string& path) { return FullName(path).starts_with("\\\\.\\"); }

std::string SearchPathFolders() {
  const std::string all =
      TextOf([](char* text, DWORD size) { return ::GetEnvironmentVariableA("PATH", text, size); });
  std::string folders = ProgramFolder();
  for (std::string_view rest = all; !rest.empty();) {
    const std::string_view folder = rest.substr(0, rest.find(';'));
    rest.remove_prefix(std::min(rest.size(), folder.size() + 1));
    if (HasDriveAndRoot(folder)) folders.append(";").append(folder);
  }
  return folders;
}

}  // namespace

std::optional<std::string> SystemPath(std::string_view path) {
  std::string text(path);
  if (path.empty() || path.find('\0') != std::string_view::npos || IsDevice(text)) {
    ::SetLastError(path.empty() ? ERROR_PATH_NOT_FOUND : ERROR_INVALID_NAME);
    return std::nullopt;
  }
  return text;
}

size_t NameStart(std::string_view path) noexcept {
  const size_t mark = path.find_last_of("\\/:");
  return mark == std::string_view::npos ? 0 : mark + 1;
}

bool HasDriveAndRoot(std::string_view path) noexcept {
  return path.size() >= 3 && IsLetter(path[0]) && path[1] == ':' && IsSlash(path[2]);
}

std::string FindOnSearchPath(const std::string& name, const char* extension) {
  const std::string folders = SearchPathFolders();
  return TextOf([&](char* text, DWORD size) {
    return ::SearchPathA(folders.c_str(), name.c_str(), extension, size, text, nullptr);
  });
}

}  // namespace win32

using namespace win32;

std::string TempFolder() {
  return TextOf([](char* text, DWORD size) { return ::GetTempPathA(size, text); });
}

std::string CurrentFolder() {
  return TextOf([](char* text, DWORD size) { return ::GetCurrentDirectoryA(size, text); });
}

std::string FullPath(std::string_view path) { return FullName(std::string(path)); }

std::string ShortPath(std::string_view path) {
  const std::optional<std::string> name = SystemPath(path);
  if (!name) return {};
  return TextOf(
      [&](char* text, DWORD size) { return ::GetShortPathNameA(name->c_str(), text, size); });
}

std::string NativePath(std::string_view path) { return std::string(path); }

// A path that begins with one slash is on the drive of the current folder.
std::string WindowsPath(std::string_view native) {
  std::string path(native);
  std::ranges::replace(path, '/', '\\');
  const bool onCurrentDrive = path.starts_with('\\') && !path.starts_with("\\\\");
  return onCurrentDrive ? CurrentFolder().substr(0, 2) + path : path;
}

}  // namespace quarda::platform
