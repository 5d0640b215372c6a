// The lines of a body for those who read it from start to end.
#pragma once

#include <StringList.h>

#include <array>
#include <cstddef>
#include <string_view>

#include "LineScan.h"

namespace quarda {

/// Walks over the lines of a list, or over those of a text that nobody has split into a list yet.
/// Borrows what it walks over; a copy walks on by itself.
class TBodyLines {
 public:
  /// The lines from `first` up to `end` (exclusive).
  TBodyLines(const TStringList& list, size_t first, size_t end) noexcept
      : list_(&list), next_(first), end_(end) {}
  explicit TBodyLines(const TStringList& list) noexcept : TBodyLines(list, 0, list.Count()) {}
  explicit TBodyLines(std::string_view text) noexcept : text_(text) {}

  /// The next line; false behind the last one.
  bool Next(std::string_view& line) noexcept {
    if (list_ ? next_ >= end_ : text_.empty()) return false;
    line = list_ ? (*list_)[next_++] : TakeLine(text_);
    return true;
  }

  /// The next lines, as many as stand in memory joined with CR LF, as one text; false behind the
  /// last one.
  bool NextJoined(std::string_view& text) noexcept {
    if (list_ ? next_ >= end_ : text_.empty()) return false;
    text = list_ ? TakeJoinedOfList() : TakeJoined(text_);
    return true;
  }

  // About the lines still to come.
  size_t CountLines() const noexcept;
  /// Without line ends.
  size_t CountCharacters() const noexcept;
  /// The last two characters of the lines put together, the very last one second; NUL where there
  /// is none.
  std::array<char, 2> LastTwo() const noexcept;
  /// Puts the lines together with a separator between them. A null target only asks for the length.
  size_t Join(std::string_view separator, char* target) const noexcept;

 private:
  std::string_view TakeJoinedOfList() noexcept;

  const TStringList* list_ = nullptr;  // null: the lines are those of the text
  size_t next_ = 0;
  size_t end_ = 0;
  std::string_view text_;
};

}  // namespace quarda
