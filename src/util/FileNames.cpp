#include "FileNames.h"

#include <CodePage.h>

#include <algorithm>
#include <cstddef>

namespace quarda {
namespace {

/// Where the file-name part begins.
size_t NameStart(std::string_view path) noexcept {
  size_t start = path.size();
  while (start > 0 && path[start - 1] != '\\' && path[start - 1] != ':') --start;
  return start;
}

/// Where the extension begins: at its dot, or at the end.
size_t ExtensionStart(std::string_view path) noexcept {
  const size_t dot = path.rfind('.');
  return dot != std::string_view::npos && dot >= NameStart(path) ? dot : path.size();
}

}  // namespace

std::string ExtractFileName(std::string_view path) {
  return std::string(path.substr(NameStart(path)));
}

std::string ExtractFileDir(std::string_view path) {
  std::string_view folder = path.substr(0, NameStart(path));
  const bool isRoot = folder.ends_with(":\\") || folder.ends_with("\\\\") || folder.size() == 1;
  if (folder.ends_with('\\') && !isRoot) folder.remove_suffix(1);
  return std::string(folder);
}

std::string ExtractFileExt(std::string_view path) {
  return std::string(path.substr(ExtensionStart(path)));
}

std::string ChangeFileExt(std::string_view path, std::string_view extension) {
  return std::string(path.substr(0, ExtensionStart(path))).append(extension);
}

std::string AddTrailingBackslash(std::string_view path) {
  std::string result(path);
  if (!result.empty() && result.back() != '\\') result += '\\';
  return result;
}

std::string JoinPath(std::string_view folder, std::string_view name) {
  if (name.starts_with('\\') && !folder.empty()) name.remove_prefix(1);
  return AddTrailingBackslash(folder).append(name);
}

std::string_view PathRoot(std::string_view path) noexcept {
  if (!path.starts_with("\\\\")) return path.substr(0, 2);
  const size_t server = path.find('\\', 2);
  if (server == std::string_view::npos) return path;
  return path.substr(0, path.find('\\', server + 1));
}

std::string RelativePath(std::string_view baseFolder, std::string_view path) {
  if (!platform::SameAnsiText(PathRoot(baseFolder), PathRoot(path))) return std::string(path);
  size_t shared = 0;  // behind the last backslash up to which both are the same
  for (size_t slash = baseFolder.find('\\'); slash != std::string_view::npos;
       slash = baseFolder.find('\\', slash + 1)) {
    if (!platform::SameAnsiText(baseFolder.substr(0, slash + 1), path.substr(0, slash + 1))) break;
    shared = slash + 1;
  }
  std::string relative;
  const std::string_view own = baseFolder.substr(shared);
  for (size_t up = static_cast<size_t>(std::ranges::count(own, '\\')); up > 0; --up) {
    relative += "..\\";
  }
  return relative.append(path.substr(shared));
}

}  // namespace quarda
