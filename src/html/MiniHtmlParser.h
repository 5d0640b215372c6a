// A small, forgiving HTML scanner that edits the text in place; the door of the module.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "AttrList.h"
#include "EditableText.h"
#include "TagIndex.h"

namespace quarda {

/// Holds an HTML text and a place in it, steps from tag to tag and edits the text. Positions count
/// from 1; the text may have up to 2 GB. There is no document tree: every "<" starts a tag, and the
/// content of scripts is scanned like any text.
///
/// A walk through the whole text with edits on the way takes time in proportion to the text,
/// whatever it holds.
class THtmlParser {
 public:
  void SetText(std::string text);
  /// The text with all edits.
  std::string GetText() const { return text_.Slice(0, text_.Size()); }

  /// The position of the current tag's "<"; after an edit, where that happened.
  int32_t GetTagStart() const noexcept { return tagStart_; }
  /// The position behind the current tag, where the next search starts.
  int32_t GetIndex() const noexcept { return index_; }
  void SetIndex(int32_t position) noexcept;

  /// Finds the next tag at or behind the index. Without one the place stays as it is.
  bool Next();
  /// The text of the current tag.
  std::string GetTag() const;
  /// A new tag object for the current tag. It keeps the positions of now: take it again after an
  /// edit in front of it.
  TAttrListGuardRef Get() const;
  /// Makes that tag current again; nothing happens for a null tag.
  void GotoTag(const TAttrListGuardRef& tag);
  /// Moves to the closing tag of the current tag, passing over nested elements of its name. Without
  /// one it stands at the end of its search.
  bool GotoClosingTag();

  void DeleteTag();
  /// Deletes from the position up to the end of the current tag.
  void DeleteFrom(int32_t position);
  /// Deletes from the start of one tag to the end of the other, or of itself when that is null.
  void DeleteTagSpan(const TAttrListGuardRef& startTag, const TAttrListGuardRef& endTag);
  /// Inserts at the index; the next search starts at the inserted text.
  void Insert(std::string_view text);
  void ReplaceTag(std::string_view text);
  void ReplaceTag(const TAttrListGuardRef& tag);
  /// Replaces the current tag with its content and its closing tag, if it has one.
  void SetTagOuterHTML(std::string_view text);

 private:
  void Edit(int32_t from, int32_t to, std::string_view text);
  size_t Offset(int32_t position) const noexcept;

  TEditableText text_;
  TTagIndex tags_;
  size_t noMark_ = kNowhere;  // from this offset on the text holds no "?>"
  int32_t tagStart_ = 0;
  int32_t index_ = 0;
};

/// The characters from `start` to `end`, both included.
std::string SubStr(std::string_view text, int32_t start, int32_t end);

/// The bytes of a file. Raises EPlatformError.
std::string ReadFileToString(std::string_view fileName);
/// Gives a file these bytes. Raises EPlatformError.
void WriteFileFromString(std::string_view fileName, std::string_view content);

}  // namespace quarda
