// The check-list file: attachment and subject patterns that live outside the settings.
#pragma once

#include <Clock.h>
#include <QDIntf.h>

#include <string>
#include <string_view>

namespace quarda {

/// Where the scan's check-list file lies.
std::string CheckListPath(IQuardaInstance& instance);

/// The five lists of a check-list file, and its date stamp. docs/checks.md shows the layout.
/// Borrows the scan and the clock.
class TClfFile {
 public:
  explicit TClfFile(IQuardaInstance& instance,
                    const platform::TClock& clock = platform::SystemClock());

  /// Replaces the lists by those of the file; a missing file empties them.
  void Load(std::string_view fileName);
  /// The same from lines in memory; null is an empty list. Without any line the stamp goes too, and
  /// lines that do not begin with a stamp leave it as it was.
  void LoadFromStrings(IStringList* lines);
  /// Writes the file, stamped with the current date when there is no stamp yet. Raises
  /// EPlatformError.
  void Save(std::string_view fileName);
  /// A copy without blank lines and comments; empty for null.
  TRef<IStringList> NormalList(IStringList* list) const;

  /// The file last loaded or saved.
  const std::string& GetFileName() const noexcept { return fileName_; }
  const std::string& GetFileTime() const noexcept { return fileTime_; }
  void SetFileTime(std::string fileTime) { fileTime_ = std::move(fileTime); }
  IStringList* GetInvalidAttachments() const noexcept { return invalidAttachments_.Get(); }
  IStringList* GetVirusSubjects() const noexcept { return virusSubjects_.Get(); }
  IStringList* GetNoVirusSubjects() const noexcept { return noVirusSubjects_.Get(); }
  IStringList* GetSuspiciousSubjects() const noexcept { return suspiciousSubjects_.Get(); }
  IStringList* GetNoSuspiciousSubjects() const noexcept { return noSuspiciousSubjects_.Get(); }

 private:
  bool TakeStamp(std::string_view line);
  IStringList* SectionList(std::string_view header) const;
  void Clear();

  IQuardaInstance& instance_;
  const platform::TClock& clock_;
  std::string fileName_;
  std::string fileTime_;
  const TRef<IStringList> invalidAttachments_;
  const TRef<IStringList> virusSubjects_;
  const TRef<IStringList> noVirusSubjects_;
  const TRef<IStringList> suspiciousSubjects_;
  const TRef<IStringList> noSuspiciousSubjects_;
};

}  // namespace quarda
