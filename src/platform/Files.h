// Files and folders. Every path given or returned is a Windows path (`C:\folder\file`); the backend
// translates where it calls the system and nowhere else. See docs/architecture.md for the rules.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarda::platform {

enum TFileAttribute : uint32_t {
  kReadOnly = 0x01,
  kHidden = 0x02,
  kSystem = 0x04,
  kFolder = 0x10,
  kArchive = 0x20,
};

/// One directory entry.
struct TFileRecord {
  std::string name;         ///< without folder, in the spelling of the disk
  uint64_t size = 0;        ///< bytes; 0 for folders
  uint32_t stamp = 0;       ///< last write, packed DOS date and time (see Clock.h)
  uint32_t attributes = 0;  ///< TFileAttribute bits
};

/// Whether the path names an existing file: no folder, and no pipe or device either.
bool FileExists(std::string_view path) noexcept;
/// Whether the path names an existing folder.
bool FolderExists(std::string_view path) noexcept;
/// Whether anything has that name, in whatever letter case: also a link to nothing.
bool NameExists(std::string_view path) noexcept;

/// The first entry that matches; the last component may hold the wildcards `*` and `?`.
std::optional<TFileRecord> FindFile(std::string_view pattern);
/// All entries that match, sorted by name without regard to letter case; "." and ".." are left out.
/// A folder that cannot be read gives an empty list.
std::vector<TFileRecord> FindFiles(std::string_view pattern);
/// The names of the folders in a folder, sorted in the same way. Where the system tells the kind
/// together with the name, nothing is asked about the files beside them.
std::vector<std::string> FindFolders(std::string_view folder);

/// Creates the folder and every missing parent. True when the folder exists afterwards.
bool CreateFolders(std::string_view path) noexcept;
/// Deletes a file (not a folder). True when it was there and is gone.
bool RemoveFile(std::string_view path) noexcept;
/// The same for a name that the engine chose itself: as it is written, without a look through the
/// folder for another letter case.
bool RemoveExactFile(std::string_view path) noexcept;
/// Renames within one volume, replacing nothing that the system would not replace.
bool RenameFile(std::string_view from, std::string_view to) noexcept;
/// Copies the content, overwriting an existing target, and the mode, as far as this user may make
/// the target look like the source. A failed copy leaves no target.
bool DuplicateFile(std::string_view from, std::string_view to) noexcept;
/// Clears all attributes, so that a read-only file can be replaced.
bool ClearAttributes(std::string_view path) noexcept;

/// Forces the names that were made, changed and removed in the folder to the disk, where the system
/// can do that. False when the disk refuses.
bool FlushFolder(std::string_view path) noexcept;

/// Last write as a packed DOS date and time in local time; nothing when the file does not exist.
std::optional<uint32_t> FileStamp(std::string_view path) noexcept;
bool SetFileStamp(std::string_view path, uint32_t stamp) noexcept;

/// The folder for temporary files, with its trailing backslash.
std::string TempFolder();
/// The current folder, without a trailing backslash (except for a root).
std::string CurrentFolder();
/// The path made absolute against the current folder.
std::string FullPath(std::string_view path);
/// The short (8.3) form where the system keeps one, otherwise the path itself; empty when the file
/// does not exist.
std::string ShortPath(std::string_view path);
/// The path as programs of this system write it: what a child process may be given.
std::string NativePath(std::string_view path);
/// A path of this system in the Windows form.
std::string WindowsPath(std::string_view native);

enum class TOpenMode {
  kRead,        ///< existing file; others may read and write it meanwhile
  kReadShared,  ///< existing file; others may read it but not write it (where the system can say
                ///< so)
  kCreate,      ///< for writing; created or truncated
  kCreateNew,   ///< for writing; fails when the name exists, readable by this user alone
  kUpdate,      ///< existing file, for reading and writing
  kAppend,      ///< for writing; every write goes to the end, created when missing
};

/// An open file; closed by its destructor. Every failing call raises EPlatformError.
class TFile {
 public:
  TFile(std::string_view path, TOpenMode mode);
  TFile(TFile&& other) noexcept;
  TFile& operator=(TFile&&) = delete;
  ~TFile();

  /// Reads up to `size` bytes; fewer only at the end of the file.
  size_t Read(void* buffer, size_t size);
  /// When the file is open for appending and not all fits, nothing of it stays.
  void Write(const void* data, size_t size);
  void Seek(uint64_t offset);
  uint64_t Size() const;
  void SetSize(uint64_t size);
  /// Forces written data to the disk.
  void Flush();

 private:
  intptr_t handle_;
  bool appends_;
  std::string path_;
};

/// What a replaced file survives; a killed process leaves the old or the new content in any case.
enum class TDurability {
  kPassing,  ///< a power failure may lose the file
  kNormal,   ///< a power failure leaves what the system promises for a renamed file
  kFlushed,  ///< a power failure leaves the old or the new content
};

/// What a process killed while it replaced a file may leave in the folder of that file.
inline constexpr const char* kReplacementFiles = ".quarda-*.tmp";

/// New content for a file that must survive: it is written beside the file and renamed into place
/// by `Commit`, keeping owner and mode of the old one; without `Commit` the old content stays and
/// nothing is left behind. A link is followed to the file it names. Where the folder allows no new
/// file (or the system no path that long), the content is collected and written in place by
/// `Commit`.
class TReplacingFile {
 public:
  explicit TReplacingFile(std::string_view path, TDurability durability = TDurability::kNormal);
  TReplacingFile(const TReplacingFile&) = delete;
  TReplacingFile& operator=(const TReplacingFile&) = delete;
  ~TReplacingFile();

  void Write(const void* data, size_t size);
  void Commit();

 private:
  struct TState;
  std::unique_ptr<TState> state_;
};

/// The whole file as bytes. Raises EPlatformError when it cannot be read, and std::length_error
/// when no text can be that long.
std::string ReadWholeFile(std::string_view path);
/// `TReplacingFile` in one call.
void ReplaceFileContent(std::string_view path, std::string_view content,
                        TDurability durability = TDurability::kNormal);
/// The same for content that mostly is there already: then it is written over where it lies, which
/// shows the same bytes at every moment and spares the making of a file.
void RewriteFileContent(std::string_view path, std::string_view content);

}  // namespace quarda::platform
