// The one list of lines: header values, body lines, address lists, settings, whole text files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "TextBlock.h"

namespace quarda {

/// Told when a list changed. Borrowed by the list; must outlive it.
class TStringListObserver {
 public:
  virtual void StringListChanged() = 0;

 protected:
  ~TStringListObserver() = default;
};

/// An ordered list of 8-bit lines; lines may repeat and are never sorted. A line `name=value` is a
/// pair, split at its first "="; lookups by name and by line ignore letter case and take the first
/// match.
///
/// A line is a pointer and a length into a block that the list keeps alive: loading a text copies
/// no line and allocates nothing per line. A view of a line stays valid until the list is changed.
///
/// An index outside the list raises EListError "List index out of bounds (%d)".
class TStringList {
 public:
  TStringList() = default;
  TStringList(const TStringList& other) { Assign(other); }
  TStringList& operator=(const TStringList& other) {
    Assign(other);
    return *this;
  }
  /// Takes the lines; the observers stay where they are, and the source is left empty.
  TStringList(TStringList&& other) noexcept { SwapLines(other); }
  TStringList& operator=(TStringList&& other) noexcept;
  ~TStringList() = default;

  size_t Count() const noexcept { return lines_.size(); }
  bool IsEmpty() const noexcept { return lines_.empty(); }
  std::string_view Line(size_t index) const {
    CheckIndex(index);
    return View(lines_[index]);
  }
  /// Without the check of the index, for loops.
  std::string_view operator[](size_t index) const noexcept { return View(lines_[index]); }

  void SetLine(size_t index, std::string_view text);
  size_t Add(std::string_view text);
  /// `index` may equal the count.
  void Insert(size_t index, std::string_view text);
  void Delete(size_t index);
  void Clear();

  /// The part of a line before its first "="; empty without one.
  std::string_view Name(size_t index) const;
  /// The value of the first line with that name; empty when there is none.
  std::string_view Value(std::string_view name) const;
  /// Replaces the first line of that name or appends one; an empty value deletes the line.
  void SetValue(std::string_view name, std::string_view value);
  /// -1 when there is none.
  ptrdiff_t IndexOf(std::string_view line) const noexcept;
  ptrdiff_t IndexOfName(std::string_view name) const noexcept;

  /// Every line followed by CR LF.
  std::string Text() const;
  /// Replaces all lines, splitting at CR LF, a lone CR and a lone LF.
  void SetText(std::string_view text);
  /// The same without copying: the lines point into the block.
  void SetText(TTextBlock block);
  /// Lines joined with a separator between them.
  std::string SeparateText(std::string_view separator) const;
  /// Replaces all lines by the pieces between separators; a trailing empty piece adds nothing, an
  /// empty separator is never found.
  void SetSeparateText(std::string_view text, std::string_view separator);

  /// Replaces all lines by a copy of the other's, line by line. Blocks are shared, not copied.
  void Assign(const TStringList& other);
  void AddStrings(const TStringList& other);
  /// Removes every line that holds nothing but blanks and control characters.
  void EraseEmptyLines();

  /// Replaces the lines by those of a file. Raises EPlatformError.
  void LoadFromFile(std::string_view path);
  /// Writes the text form, never leaving a part of it in the file. Raises EPlatformError.
  void SaveToFile(std::string_view path) const;

  /// Appends a line that lies in a block given to `Keep` (or in memory that outlives the list); for
  /// readers that split a block themselves. Tells no observer: wrap the loop in an update bracket.
  void AddSlice(std::string_view line) { lines_.push_back({line.data(), line.size()}); }
  /// The same for every line of a text, split as `SetText` does it.
  void AddSlices(std::string_view text);
  /// Keeps a block alive as long as the list's lines.
  void Keep(const TTextBlock& block);
  void Reserve(size_t lines) { lines_.reserve(lines); }

  /// Between these calls changes are told once, at the end. They nest.
  void BeginUpdate() noexcept { ++updates_; }
  void EndUpdate();
  void SetObserver(TStringListObserver* observer) noexcept { observer_ = observer; }
  /// Whether the lines were ever changed by anything but the slices.
  bool WasChanged() const noexcept { return wasChanged_; }

 private:
  static constexpr size_t kCompactAt = 65536;

  struct TLine {
    const char* data;
    size_t size;
  };

  static std::string_view View(const TLine& line) noexcept { return {line.data, line.size}; }
  void CheckIndex(size_t index) const {
    if (index >= lines_.size()) RaiseIndex(index);
  }
  [[noreturn]] static void RaiseIndex(size_t index);
  TLine Store(std::string_view text);
  char* Allocate(size_t size);
  void SwapLines(TStringList& other) noexcept;
  void CompactIfWasteful();
  void DropLines() noexcept;
  void Changed();

  std::vector<TLine> lines_;
  std::vector<TTextBlock> blocks_;  // what the lines point into
  TTextBlock arena_;                // where new lines are stored; also in blocks_
  size_t arenaUsed_ = 0;
  size_t stored_ = 0;              // bytes stored since the last compaction
  size_t compactAt_ = kCompactAt;  // how many of them make it worth looking for dead ones
  TStringListObserver* observer_ = nullptr;
  uint32_t updates_ = 0;
  bool changedInUpdate_ = false;
  bool wasChanged_ = false;
};

/// Opens an update bracket for a scope.
class TStringListUpdate {
 public:
  explicit TStringListUpdate(TStringList& list) : list_(list) { list_.BeginUpdate(); }
  TStringListUpdate(const TStringListUpdate&) = delete;
  TStringListUpdate& operator=(const TStringListUpdate&) = delete;
  ~TStringListUpdate() { list_.EndUpdate(); }

 private:
  TStringList& list_;
};

}  // namespace quarda
