// The content of an INI file in memory.
#pragma once

#include <StringList.h>

#include <cstddef>
#include <cstdint>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace quarda {

/// One section: its lines as they are, and the values of those that hold a key. Keys are found
/// without regard to letter case; of several lines with one key the first counts.
class TIniSection {
 public:
  explicit TIniSection(std::string_view name) : name_(name) {}

  const std::string& Name() const noexcept { return name_; }
  /// Appends a line: a slice of the block, or a copy when there is no block.
  void Append(std::string_view line, const TTextBlock& block);
  /// A view into the line, valid until the section changes; nothing when the key is missing.
  std::optional<std::string_view> Value(std::string_view key) const;
  /// Replaces the key's line or appends one.
  void SetValue(std::string_view key, std::string_view line);
  /// Deletes every line with that key.
  void DeleteValue(std::string_view key);
  TStringList Lines() const;
  /// Passes every line to `emit`.
  template <class TEmit>
  void ForEachLine(TEmit emit) const {
    for (size_t i = 0; i < lines_.Count(); ++i) {
      if (!lines_[i].empty()) emit(lines_[i]);
    }
  }

 private:
  static constexpr size_t kNone = static_cast<size_t>(-1);
  static constexpr size_t kScanned = 16;  // up to so many lines no index is worth its memory

  size_t Find(std::string_view key) const;
  void BuildIndex() const;
  void IndexLine(size_t line) const;
  void DropIndex() const;

  std::string name_;
  TStringList lines_;  // a deleted line is empty until enough of them have gathered
  size_t deleted_ = 0;
  // The first line of each key in lower case; complete as far as `indexed_` says.
  mutable std::unordered_map<std::string, size_t> index_;
  mutable bool indexed_ = false;
  mutable bool repeatedKeys_ = false;
};

/// Sections in the order of the file, each with its lines. Sections and keys are found without
/// regard to letter case and to blanks at their ends, in constant time however many there are.
///
/// Reading drops empty lines, comments (";") and lines before the first section. A header that
/// occurs again continues its section.
class TIniFile {
 public:
  TIniFile() = default;
  TIniFile(const TIniFile&) = delete;
  TIniFile& operator=(const TIniFile&) = delete;

  /// Both replace the content. A UTF-8 mark at the start of the text is skipped.
  void SetText(std::string_view text);
  void SetLines(const TStringList& lines);
  /// The content in the form of the file: header, lines, an empty line for each section.
  std::string Text() const;
  TStringList Lines() const;
  void Clear() noexcept;

  bool HasSection(std::string_view section) const;
  TStringList SectionNames() const;
  /// Valid until the content changes; nothing when the section or the key is missing.
  std::optional<std::string_view> Value(std::string_view section, std::string_view key) const;
  /// Replaces the line of the key, or appends it to its section, or the section to the file.
  void SetValue(std::string_view section, std::string_view key, std::string_view value);
  void DeleteValue(std::string_view section, std::string_view key);
  TStringList Section(std::string_view section) const;
  void DeleteSection(std::string_view section);
  /// Replaces a section; it moves to the end of the file. The lines are read like those of a file:
  /// empty ones and comments are lost, and one like a header opens a section.
  void WriteSection(std::string_view section, const TStringList& lines);

 private:
  using TSections = std::list<TIniSection>;

  const TIniSection* Find(std::string_view section) const;
  TIniSection* Find(std::string_view section);
  TIniSection& FindOrAdd(std::string_view section);
  TIniSection* ReadLine(std::string_view line, const TTextBlock& block, TIniSection* current);
  void ReadLines(const TStringList& lines, const TTextBlock& block, TIniSection* current);
  template <class TEmit>
  void ForEachLine(TEmit emit) const;

  TSections sections_;
  std::unordered_map<std::string, TSections::iterator> index_;  // by name in lower case
  mutable const TIniSection* lastFound_ = nullptr;  // most questions ask for the same one again
  // Whether a line was written that reading would take for something else than an entry.
  bool readsDifferently_ = false;
};

}  // namespace quarda
