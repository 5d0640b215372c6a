// Questions about files and folders, and what is done to them by name.
#include "Files.h"

#include <algorithm>

#include "FileCalls.h"
#include "FilePattern.h"
#include "LocalTime.h"
#include "Paths.h"
#include "Quiet.h"

namespace quarda::platform {

using namespace win32;

namespace {

constexpr uint32_t kKnownAttributes = kReadOnly | kHidden | kSystem | kFolder | kArchive;

bool IsFolder(DWORD attributes) noexcept {
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool IsFile(DWORD attributes) noexcept {
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

bool EndsWithSlash(std::string_view path) noexcept {
  return path.ends_with('\\') || path.ends_with('/');
}

TFileRecord RecordOf(const WIN32_FIND_DATAA& found) {
  TFileRecord record;
  record.name = found.cFileName;
  record.attributes = found.dwFileAttributes & kKnownAttributes;
  record.stamp = ToDosStamp(ToLocalTime(found.ftLastWriteTime));
  if ((record.attributes & kFolder) == 0) {
    record.size = static_cast<uint64_t>(found.nFileSizeHigh) << 32 | found.nFileSizeLow;
  }
  return record;
}

/// A directory search; ended by the destructor.
class TFinder {
 public:
  explicit TFinder(const std::string& pattern) noexcept
      : finder_(::FindFirstFileA(pattern.c_str(), &found_)), valid_(finder_ != kNone) {}
  TFinder(const TFinder&) = delete;
  TFinder& operator=(const TFinder&) = delete;
  ~TFinder() {
    if (finder_ != kNone) ::FindClose(finder_);
  }

  explicit operator bool() const noexcept { return valid_; }
  const WIN32_FIND_DATAA& operator*() const noexcept { return found_; }
  void Next() noexcept { valid_ = ::FindNextFileA(finder_, &found_) != 0; }

 private:
  static inline const HANDLE kNone = INVALID_HANDLE_VALUE;

  WIN32_FIND_DATAA found_{};
  HANDLE finder_;
  bool valid_;
};

/// The entries of the folder that match, in order. The system's own matching also looks at the
/// short names that it keeps ("*.htm" finds "a.html"), so all are asked for.
std::vector<TFileRecord> Matching(const std::string& folder, std::string_view pattern) {
  std::vector<TFileRecord> records;
  for (TFinder finder(folder + "*"); finder; finder.Next()) {
    const std::string_view name = (*finder).cFileName;
    if (!IsDotName(name) && MatchesFilePattern(name, pattern)) records.push_back(RecordOf(*finder));
  }
  std::ranges::sort(records, SortsBefore, &TFileRecord::name);
  return records;
}

std::vector<TFileRecord> Search(std::string_view pattern) {
  const std::string folder(pattern.substr(0, NameStart(pattern)));
  const std::string_view name = pattern.substr(folder.size());
  if (name.empty() || IsDotName(name) || pattern.find('\0') != std::string_view::npos) return {};
  if (HasWildcards(name)) return Matching(folder, name);
  const std::optional<std::string> path = SystemPath(pattern);
  if (!path) return {};
  const TFinder finder(*path);
  return finder ? std::vector<TFileRecord>{RecordOf(*finder)} : std::vector<TFileRecord>();
}

/// The length of the part of the path that is never created: a drive's or a share's root.
size_t RootSize(const std::string& path) {
  if (!path.starts_with("\\\\")) return std::min<size_t>(path.size(), 3);
  const size_t server = path.find('\\', 2);
  const size_t share = server == std::string::npos ? server : path.find('\\', server + 1);
  return std::min(path.size(), share);
}

bool MakeFolder(const std::string& path) noexcept {
  return ::CreateDirectoryA(path.c_str(), nullptr) != 0 || ::GetLastError() == ERROR_ALREADY_EXISTS;
}

/// Creates the folder and its parents, starting with the one nearest to the root.
bool MakeFolders(const std::string& full) {
  for (size_t end = RootSize(full); end < full.size();) {
    end = std::min(full.find('\\', end + 1), full.size());
    const std::string folder = full.substr(0, end);
    if (!IsFolder(::GetFileAttributesA(folder.c_str())) && !MakeFolder(folder)) return false;
  }
  return IsFolder(::GetFileAttributesA(full.c_str()));
}

/// The handle of something whose times or names are to be changed, folders too.
THandle OpenEntry(const std::string& path, DWORD access) noexcept {
  return THandle(OpenFile(path, access, OPEN_EXISTING, kShareAll, FILE_FLAG_BACKUP_SEMANTICS));
}

}  // namespace

bool FileExists(std::string_view path) noexcept {
  return OrElse(false, [&] { return !EndsWithSlash(path) && IsFile(AttributesOf(path)); });
}

bool FolderExists(std::string_view path) noexcept {
  return OrElse(false, [&] { return IsFolder(AttributesOf(path)); });
}

bool NameExists(std::string_view path) noexcept {
  return OrElse(true, [&] { return AttributesOf(path) != INVALID_FILE_ATTRIBUTES; });
}

std::optional<TFileRecord> FindFile(std::string_view pattern) {
  std::vector<TFileRecord> records = Search(pattern);
  if (records.empty()) return std::nullopt;
  return std::move(records.front());
}

std::vector<TFileRecord> FindFiles(std::string_view pattern) { return Search(pattern); }

std::vector<std::string> FindFolders(std::string_view folder) {
  std::vector<std::string> names;
  for (TFileRecord& record : Search(std::string(folder) + (EndsWithSlash(folder) ? "*" : "\\*"))) {
    if ((record.attributes & kFolder) != 0) names.push_back(std::move(record.name));
  }
  return names;
}

bool CreateFolders(std::string_view path) noexcept {
  return OrElse(false, [&] {
    const std::optional<std::string> name = SystemPath(path);
    if (!name) return false;
    std::string full = FullPath(*name);
    while (full.size() > RootSize(full) && full.ends_with('\\')) full.pop_back();
    return IsFolder(::GetFileAttributesA(full.c_str())) || MakeFolders(full);
  });
}

bool RemoveFile(std::string_view path) noexcept {
  return OrElse(false, [&] {
    const std::optional<std::string> name = SystemPath(path);
    return name && ::DeleteFileA(name->c_str()) != 0;
  });
}

bool RemoveExactFile(std::string_view path) noexcept { return RemoveFile(path); }

bool RenameFile(std::string_view from, std::string_view to) noexcept {
  return OrElse(false, [&] {
    const std::optional<std::string> source = SystemPath(from);
    const std::optional<std::string> target = SystemPath(to);
    return source && target && ::MoveFileExA(source->c_str(), target->c_str(), 0) != 0;
  });
}

bool DuplicateFile(std::string_view from, std::string_view to) noexcept {
  return OrElse(false, [&] {
    const std::optional<std::string> source = SystemPath(from);
    const std::optional<std::string> target = SystemPath(to);
    return source && target && ::CopyFileA(source->c_str(), target->c_str(), FALSE) != 0;
  });
}

bool ClearAttributes(std::string_view path) noexcept {
  return OrElse(false, [&] {
    const std::optional<std::string> name = SystemPath(path);
    return name && ::SetFileAttributesA(name->c_str(), FILE_ATTRIBUTE_NORMAL) != 0;
  });
}

// Needs a right that only administrators have; the system keeps a journal of names in any case.
bool FlushFolder(std::string_view path) noexcept {
  return OrElse(false, [&] {
    const std::optional<std::string> name = SystemPath(path);
    const THandle folder = name ? OpenEntry(*name, GENERIC_WRITE) : THandle();
    if (!folder) return ::GetLastError() == ERROR_ACCESS_DENIED;
    if (::FlushFileBuffers(folder.Get()) != 0) return true;
    const DWORD error = ::GetLastError();  // not every file system does that for a folder
    return error == ERROR_ACCESS_DENIED || error == ERROR_INVALID_FUNCTION ||
           error == ERROR_NOT_SUPPORTED || error == ERROR_INVALID_HANDLE;
  });
}

std::optional<uint32_t> FileStamp(std::string_view path) noexcept {
  return OrElse(std::optional<uint32_t>(), [&]() -> std::optional<uint32_t> {
    const std::optional<std::string> name = SystemPath(path);
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (!name || !::GetFileAttributesExA(name->c_str(), GetFileExInfoStandard, &data) ||
        !IsFile(data.dwFileAttributes)) {
      return std::nullopt;
    }
    return ToDosStamp(ToLocalTime(data.ftLastWriteTime));
  });
}

bool SetFileStamp(std::string_view path, uint32_t stamp) noexcept {
  return OrElse(false, [&] {
    const std::optional<std::string> name = SystemPath(path);
    const std::optional<FILETIME> time = FromLocalTime(FromDosStamp(stamp));
    if (!name || !time) return false;
    const THandle file = OpenEntry(*name, FILE_WRITE_ATTRIBUTES);
    return file && ::SetFileTime(file.Get(), nullptr, nullptr, &*time) != 0;
  });
}

}  // namespace quarda::platform
