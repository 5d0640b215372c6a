// Files whose names carry the first free number of a series. A name is taken by creating or
// renaming without replacing, so two processes never take the same one.
#pragma once

#include <Files.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quarda {

/// The names prefix + number + suffix, in the order of their numbers.
struct TNumberedNames {
  std::string prefix;
  uint8_t digits = 0;
  std::string suffix;
  int32_t next = 1;  ///< where the search goes on; every name before it was taken
  int32_t last = 99999;

  /// The name of the next number; nothing behind the last one.
  std::optional<std::string> Next() const;
};

/// A new file with the content, readable by this user alone, that is gone when the object ends
/// unless it was moved.
class TTempFile {
 public:
  /// Takes the first free name. Raises EPlatformError when the file cannot be written, EError when
  /// every name is taken.
  TTempFile(TNumberedNames names, std::string_view content);
  TTempFile(const TTempFile&) = delete;
  TTempFile& operator=(const TTempFile&) = delete;
  ~TTempFile();

  /// Empty once the file was moved.
  const std::string& Path() const noexcept { return path_; }
  /// `MoveToFreeName` within the volume. The file stays under that name.
  std::optional<std::string> MoveTo(TNumberedNames& names);

 private:
  struct TNewFile;
  explicit TTempFile(const TNewFile& file);
  TTempFile(TNewFile file, std::string_view content);
  static TNewFile Create(TNumberedNames& names);

  std::string path_;
};

/// Moves the file to the first name that nothing has in whatever letter case, and returns it;
/// nothing when every name is taken. A file from another volume gets the name when it is complete,
/// and may be there twice when this process is killed. Raises EError, or what copying raises, when
/// the file cannot be moved.
std::optional<std::string> MoveToFreeName(std::string_view source, TNumberedNames& names);

}  // namespace quarda
