// Questions about files and folders, and what is done to them by name.
#include "Files.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>

#include "FileCalls.h"
#include "FilePattern.h"
#include "LocalTime.h"
#include "Paths.h"
#include "PlatformError.h"
#include "Quiet.h"

namespace quarda::platform {

using namespace posix;

namespace {

bool Stat(std::string_view path, struct stat& info) {
  return OnExisting(path, [&](const std::string& native) { return StatPath(native, info); }) == 0;
}

uint32_t StampOf(const struct stat& info) { return ToDosStamp(ToLocalTime(info.st_mtim)); }

/// A name with a leading dot counts as hidden, as it does for the programs of this system.
uint32_t AttributesOf(const struct stat& info, std::string_view name) {
  uint32_t attributes = S_ISDIR(info.st_mode) ? kFolder : kArchive;
  if ((info.st_mode & S_IWUSR) == 0) attributes |= kReadOnly;
  if (name.starts_with('.')) attributes |= kHidden;
  return attributes;
}

TFileRecord RecordOf(std::string name, const struct stat& info) {
  TFileRecord record;
  record.size = S_ISDIR(info.st_mode) ? 0 : static_cast<uint64_t>(info.st_size);
  record.stamp = StampOf(info);
  record.attributes = AttributesOf(info, name);
  record.name = std::move(name);
  return record;
}

/// A search pattern: the folder with its closing slash (empty for the current one) and the rest.
struct TSearch {
  explicit TSearch(std::string_view path)
      : folder(path.substr(0, NameStart(path))), name(path.substr(folder.size())) {}
  std::string_view folder;
  std::string_view name;
};

std::optional<TFileRecord> FindOne(std::string_view path, std::string_view name) {
  if (name.empty() || IsDotName(name)) return std::nullopt;
  struct stat info;
  std::string spelling;
  const int result = OnExisting(path, [&](const std::string& native) {
    spelling = native.substr(native.rfind('/') + 1);
    return StatPath(native, info);
  });
  if (result != 0) return std::nullopt;
  return RecordOf(std::move(spelling), info);
}

TFolder OpenExistingFolder(std::string_view path) {
  TFolder folder;
  OnExisting(path, [&](const std::string& native) {
    folder = OpenFolder(native);
    return folder == nullptr ? -1 : 0;
  });
  return folder;
}

std::vector<std::string> MatchingNames(const TFolder& folder, std::string_view pattern) {
  std::vector<std::string> names;
  while (const char* entry = NextName(folder)) {
    if (!IsDotName(entry) && MatchesFilePattern(entry, pattern)) names.emplace_back(entry);
  }
  std::sort(names.begin(), names.end(), SortsBefore);
  return names;
}

/// The records of the matching entries in order, at most `limit`. What cannot be asked about (a
/// link to nothing, a file deleted meanwhile) does not exist.
std::vector<TFileRecord> Search(std::string_view pattern, size_t limit) {
  const TSearch search(pattern);
  std::vector<TFileRecord> records;
  if (!HasWildcards(search.name)) {
    if (auto record = FindOne(pattern, search.name)) records.push_back(std::move(*record));
    return records;
  }
  const TFolder folder = OpenExistingFolder(search.folder.empty() ? "." : search.folder);
  if (folder == nullptr) return records;
  for (std::string& name : MatchingNames(folder, search.name)) {
    if (records.size() == limit) break;
    struct stat info;
    if (StatInFolder(folder, name.c_str(), info) != 0) continue;
    records.push_back(RecordOf(std::move(name), info));
  }
  return records;
}

bool IsFolder(const std::string& native) {
  struct stat info;
  return StatPath(native, info) == 0 && S_ISDIR(info.st_mode);
}

/// Creates the folder and its parents, starting with the one nearest to the root that is missing.
bool MakeFolders(const std::string& native) {
  TSpelling target = FindSpelling(native);
  if (target.path.ends_with('/')) target.path.pop_back();
  size_t end = target.path.size();
  for (size_t i = 1; i < target.missing; ++i) end = target.path.rfind('/', end - 1);
  while (target.missing > 0) {
    const std::string folder = target.path.substr(0, end);
    if (MakeFolder(folder) != 0 && errno != EEXIST) return false;
    if (end == target.path.size()) break;
    end = std::min(target.path.find('/', end + 1), target.path.size());
  }
  return IsFolder(target.path);
}

bool IsSameFile(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

bool CopyContent(int from, int to) {
  std::array<char, 65536> buffer;
  while (true) {
    const ssize_t size = ReadSome(from, buffer.data(), buffer.size());
    if (size <= 0) return size == 0;
    if (WriteAll(to, buffer.data(), static_cast<size_t>(size)) != 0) return false;
  }
}

/// Whoever may read the source may read the copy: owner first, since the mode follows him.
void CopyOwnerAndMode(const struct stat& info, int to) {
  constexpr mode_t kPermissions = 0777;
  if (ChangeOpenFileOwner(to, info.st_uid, info.st_gid) != 0) {
    ChangeOpenFileOwner(to, static_cast<uid_t>(-1), info.st_gid);
  }
  ChangeOpenFileMode(to, info.st_mode & kPermissions);
}

bool CopyOpenFile(int from, TDescriptor& to, const struct stat& info) {
  if (ResizeFile(to.Get(), 0) != 0 || !CopyContent(from, to.Get())) return false;
  CopyOwnerAndMode(info, to.Get());
  return SetOpenFileTime(to.Get(), info.st_mtim) == 0 && to.Close() == 0;
}

bool CopyFileTo(const std::string& source, const std::string& target) {
  struct stat from;
  struct stat to;
  const TDescriptor input(OpenFile(source, O_RDONLY | O_NONBLOCK));
  if (!input || StatOpenFile(input.Get(), from) != 0 || !S_ISREG(from.st_mode)) return false;
  TDescriptor output(OpenFile(target, O_WRONLY | O_CREAT | O_NONBLOCK, from.st_mode & 0777));
  if (!output || StatOpenFile(output.Get(), to) != 0 || IsSameFile(from, to)) return false;
  if (CopyOpenFile(input.Get(), output, from)) return true;
  UnlinkPath(target);
  return false;
}

}  // namespace

bool FileExists(std::string_view path) noexcept {
  return OrElse(false, [&] {
    struct stat info;
    return Stat(path, info) &&
           S_ISREG(info.st_mode);  // opening a pipe would wait for its other end
  });
}

bool FolderExists(std::string_view path) noexcept {
  return OrElse(false, [&] {
    struct stat info;
    return Stat(path, info) && S_ISDIR(info.st_mode);
  });
}

bool NameExists(std::string_view path) noexcept {
  return OrElse(true, [&] {
    struct stat info;
    return OnExisting(path, [&](const std::string& native) { return StatLink(native, info); }) == 0;
  });
}

std::optional<TFileRecord> FindFile(std::string_view pattern) {
  std::vector<TFileRecord> records = Search(pattern, 1);
  if (records.empty()) return std::nullopt;
  return std::move(records.front());
}

std::vector<TFileRecord> FindFiles(std::string_view pattern) { return Search(pattern, SIZE_MAX); }

std::vector<std::string> FindFolders(std::string_view path) {
  const TFolder folder = OpenExistingFolder(path);
  std::vector<std::string> names;
  while (const char* entry = folder == nullptr ? nullptr : NextFolderName(folder)) {
    struct stat info;
    const bool isFolder = StatInFolder(folder, entry, info) == 0 && S_ISDIR(info.st_mode);
    if (isFolder && !IsDotName(entry)) names.emplace_back(entry);
  }
  std::sort(names.begin(), names.end(), SortsBefore);
  return names;
}

bool CreateFolders(std::string_view path) noexcept {
  return OrElse(false, [&] {
    const std::optional<std::string> native = ToNative(path);
    return native && (IsFolder(*native) || MakeFolders(*native));
  });
}

bool RemoveFile(std::string_view path) noexcept {
  return OrElse(false, [&] {
    return OnExisting(path, [](const std::string& native) { return UnlinkPath(native); }) == 0;
  });
}

bool RemoveExactFile(std::string_view path) noexcept {
  return OrElse(false, [&] {
    const std::optional<std::string> native = ToNative(path);
    return native && UnlinkPath(*native) == 0;
  });
}

bool RenameFile(std::string_view from, std::string_view to) noexcept {
  return OrElse(false, [&] {
    const std::optional<std::string> target = ToNative(to);
    if (!target) return false;
    const int result = OnExisting(
        from, [&](const std::string& source) { return RenamePathIfFree(source, *target); });
    if (result == 0 || errno != ENOENT) return result == 0;
    const TSpelling folder = FindSpelling(*target);  // the folder may be spelled differently
    if (folder.missing != 1) return false;
    return OnExisting(from, [&](const std::string& source) {
             return RenamePathIfFree(source, folder.path);
           }) == 0;
  });
}

bool DuplicateFile(std::string_view from, std::string_view to) noexcept {
  return OrElse(false, [&] {
    const std::optional<std::string> target = NativeTarget(to);
    struct stat info;
    if (!target) return false;
    return OnExisting(from, [&](const std::string& source) {
             if (StatPath(source, info) != 0) return -1;
             return CopyFileTo(source, *target) ? 0 : (errno = EIO, -1);
           }) == 0;
  });
}

bool ClearAttributes(std::string_view path) noexcept {
  return OrElse(false, [&] {
    return OnExisting(path, [](const std::string& native) {
             struct stat info;
             if (StatPath(native, info) != 0) return -1;
             if ((info.st_mode & S_IWUSR) != 0) return 0;
             return ChangeMode(native, (info.st_mode & 07777) | S_IWUSR);
           }) == 0;
  });
}

bool FlushFolder(std::string_view path) noexcept {
  return OrElse(false, [&] {
    return OnExisting(path, [](const std::string& native) {
             const TDescriptor folder(OpenFile(native, O_RDONLY | O_DIRECTORY));
             if (!folder) return errno == EACCES ? 0 : -1;
             return FlushFile(folder.Get()) == 0 || errno == EINVAL || errno == EROFS ? 0 : -1;
           }) == 0;
  });
}

std::optional<uint32_t> FileStamp(std::string_view path) noexcept {
  return OrElse(std::optional<uint32_t>(), [&]() -> std::optional<uint32_t> {
    struct stat info;
    if (!Stat(path, info) || S_ISDIR(info.st_mode)) return std::nullopt;
    return StampOf(info);
  });
}

bool SetFileStamp(std::string_view path, uint32_t stamp) noexcept {
  return OrElse(false, [&] {
    const std::optional<timespec> time = FromLocalTime(FromDosStamp(stamp));
    return time && OnExisting(path, [&](const std::string& native) {
                     return SetPathTime(native, *time);
                   }) == 0;
  });
}

std::string TempFolder() {
  const char* chosen = std::getenv("TMPDIR");
  std::string folder = ToWindows(chosen != nullptr && *chosen == '/' ? chosen : "/tmp");
  if (!folder.ends_with('\\')) folder += '\\';
  return folder;
}

std::string CurrentFolder() {
  std::string native;
  if (GetCurrentPath(native) != 0) throw EPlatformError(LastErrorCode(), "current folder");
  return ToWindows(native);
}

std::string FullPath(std::string_view path) {
  return ToAbsolute(path, IsRelative(path) ? CurrentFolder() : std::string());
}

std::string ShortPath(std::string_view path) {
  struct stat info;
  return Stat(path, info) ? std::string(path) : std::string();
}

std::string NativePath(std::string_view path) {
  return NativeTarget(path).value_or(std::string(path));
}

std::string WindowsPath(std::string_view native) { return ToWindows(native); }

}  // namespace quarda::platform
