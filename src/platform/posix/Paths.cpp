#include "Paths.h"

#include <algorithm>
#include <climits>
#include <cstdlib>

#include "CodePage.h"
#include "FileCalls.h"

namespace quarda::platform::posix {
namespace {

bool IsSlash(char c) { return c == '\\' || c == '/'; }

bool IsLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

bool HasDrive(std::string_view path) {
  return path.size() >= 2 && path[1] == ':' && IsLetter(path[0]);
}

bool IsNetworkPath(std::string_view path) {
  return path.size() >= 2 && IsSlash(path[0]) && IsSlash(path[1]);
}

/// One entry of the drive table.
struct TDrive {
  char letter = 0;
  std::string_view root;  // without closing slash
};

/// Takes the next entry off the front of the table; entries that name no folder are skipped.
std::optional<TDrive> NextDrive(std::string_view& table) {
  while (!table.empty()) {
    const std::string_view entry = table.substr(0, table.find(';'));
    table.remove_prefix(std::min(table.size(), entry.size() + 1));
    if (entry.size() < 3 || !IsLetter(entry[0]) || entry[1] != '=' || entry[2] != '/') continue;
    TDrive drive{UpperAnsi(entry[0]), entry.substr(2)};
    while (!drive.root.empty() && drive.root.back() == '/') drive.root.remove_suffix(1);
    if (drive.letter != 'C') return drive;
  }
  return std::nullopt;
}

std::string_view DriveTable() {
  const char* table = std::getenv("QUARDA_DRIVES");
  return table == nullptr ? std::string_view() : std::string_view(table);
}

/// The folder that is the root of a drive, without closing slash.
std::optional<std::string_view> DriveRoot(char letter) {
  letter = UpperAnsi(letter);
  if (letter == 'C') return std::string_view();
  std::string_view table = DriveTable();
  while (const std::optional<TDrive> drive = NextDrive(table)) {
    if (drive->letter == letter) return drive->root;
  }
  return std::nullopt;
}

/// Takes the next name off the front of a path; empty at its end.
std::string_view TakeName(std::string_view& path) {
  const auto start = std::ranges::find_if_not(path, IsSlash);
  const auto end = std::find_if(start, path.end(), IsSlash);
  path.remove_prefix(static_cast<size_t>(end - path.begin()));
  return {start, end};
}

/// Appends the names of a path to `out`, which holds its root. ".." takes the last name away again
/// and stays at a fixed root; behind a relative start it is kept.
void AppendNames(std::string& out, std::string_view path, char slash, bool fixedRoot) {
  const size_t root = out.size();
  size_t floor = root;  // below it ".." removes nothing
  for (std::string_view name = TakeName(path); !name.empty(); name = TakeName(path)) {
    if (name == ".") continue;
    const bool up = name == "..";
    if (up && out.size() > floor) {
      const size_t last = out.rfind(slash);
      out.resize(last == std::string::npos ? floor : std::max(last, floor));
      continue;
    }
    if (up && fixedRoot) continue;
    if (fixedRoot || out.size() > root) out += slash;
    out += name;
    if (up) floor = out.size();
  }
}

size_t FolderEnd(std::string_view native) { return native.rfind('/'); }

/// The name in the folder that equals the wanted one but for letter case: the very name if it is
/// there, else the first one in byte order. Empty when there is none.
std::string FindName(const TFolder& folder, std::string_view wanted) {
  std::string best;
  while (const char* entry = NextName(folder)) {
    const std::string_view name = entry;
    if (!SameAnsiText(name, wanted)) continue;
    if (name == wanted) return std::string(name);
    if (best.empty() || name < best) best = name;
  }
  return best;
}

}  // namespace

std::optional<std::string> ToNative(std::string_view path) {
  errno = ENOENT;
  if (path.empty() || IsNetworkPath(path) || path.find('\0') != std::string_view::npos) {
    return std::nullopt;
  }
  std::string native;
  native.reserve(path.size() + 1);
  const bool closed = IsSlash(path.back());
  bool absolute = IsSlash(path[0]);
  if (HasDrive(path)) {
    const std::optional<std::string_view> root = DriveRoot(path[0]);
    if (!root) return std::nullopt;
    native = *root;
    path.remove_prefix(2);
    absolute = true;
  }
  AppendNames(native, path, '/', absolute);
  if (native.empty()) return absolute ? "/" : ".";
  if (closed) native += '/';  // so that a file is not taken for the folder that was meant
  return native;
}

std::string ToWindows(std::string_view native) {
  std::string path;
  path.reserve(native.size() + 3);
  if (native.empty() || native[0] != '/') {
    path = native;
    std::ranges::replace(path, '/', '\\');
    return path;
  }
  TDrive best{'C', {}};
  std::string_view table = DriveTable();
  while (const std::optional<TDrive> drive = NextDrive(table)) {
    const size_t size = drive->root.size();
    if (size > best.root.size() && native.starts_with(drive->root) &&
        (native.size() == size || native[size] == '/')) {
      best = *drive;
    }
  }
  path += best.letter;
  path += ':';
  native.remove_prefix(best.root.size());
  for (std::string_view name = TakeName(native); !name.empty(); name = TakeName(native)) {
    path += '\\';
    path += name;
  }
  if (path.size() == 2) path += '\\';
  return path;
}

size_t NameStart(std::string_view path) noexcept {
  for (size_t end = path.size(); end > 0; --end) {
    if (IsSlash(path[end - 1])) return end;
  }
  return HasDrive(path) ? 2 : 0;
}

bool IsRelative(std::string_view path) noexcept {
  return !path.empty() && !IsSlash(path[0]) && !HasDrive(path);
}

std::string ToAbsolute(std::string_view path, std::string_view currentFolder) {
  if (path.empty()) return {};
  const bool closed = IsSlash(path.back());
  std::string full;
  if (HasDrive(path)) {
    full = path.substr(0, 2);
    path.remove_prefix(2);
  } else if (IsNetworkPath(path)) {
    full = "\\";
    for (int part = 0; part < 2; ++part) {  // server and share are the root
      full += '\\';
      full += TakeName(path);
    }
  } else if (IsSlash(path[0])) {
    full = "C:";
  } else {
    full = currentFolder.substr(0, 2);
    std::string joined(currentFolder.substr(2));
    joined += '\\';
    joined += path;
    AppendNames(full, joined, '\\', true);
    path = {};
  }
  AppendNames(full, path, '\\', true);
  if (closed || full.size() == 2) full += '\\';
  return full;
}

// The longest part of the path that exists as written is looked for from the end, because mostly
// only the last name differs; from there each folder is searched once.
TSpelling FindSpelling(const std::string& native) {
  if (native.size() >= PATH_MAX) return {native, 1};  // no such name can exist
  const bool closed = native.back() == '/' && native.size() > 1;
  std::string_view rest = std::string_view(native).substr(0, native.size() - (closed ? 1 : 0));
  TSpelling spelling;
  TFolder folder;
  while (folder == nullptr) {
    const size_t end = FolderEnd(rest);
    spelling.path = end == std::string_view::npos ? "." : end == 0 ? "/" : rest.substr(0, end);
    folder = OpenFolder(spelling.path);
    if (folder != nullptr || end == 0 || end == std::string_view::npos) break;
    rest = rest.substr(0, end);
  }
  const size_t known = FolderEnd(rest);
  std::string_view names = std::string_view(native).substr(known + 1);  // npos + 1 is the start
  if (known == std::string_view::npos) spelling.path.clear();
  for (std::string_view name = TakeName(names); !name.empty(); name = TakeName(names)) {
    if (spelling.missing == 0 && folder == nullptr) folder = OpenFolder(spelling.path);
    std::string found = folder != nullptr ? FindName(folder, name) : std::string();
    folder.reset();
    if (found.empty()) ++spelling.missing;
    if (!spelling.path.empty() && spelling.path.back() != '/') spelling.path += '/';
    spelling.path += found.empty() ? name : std::string_view(found);
  }
  if (closed) spelling.path += '/';
  return spelling;
}

std::optional<std::string> NativeTarget(std::string_view path) {
  std::optional<std::string> native = ToNative(path);
  struct stat info;
  if (native && StatLink(*native, info) != 0) native = FindSpelling(*native).path;
  return native;
}

}  // namespace quarda::platform::posix
