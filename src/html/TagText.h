// The text of one tag, read and written without a tag object.
#pragma once

#include <Utils.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quarda {

/// The two halves of a tag's text; views into it.
struct TTagParts {
  std::string_view name;        ///< "/b" for a closing tag
  std::string_view attributes;  ///< the text of all attributes
};

TTagParts SplitTag(std::string_view tagText) noexcept;

/// Whether a tag's name ends in front of that character.
inline bool EndsTagName(char c) noexcept { return c == ' ' || c == '\r' || c == '\n'; }

/// What a character means outside quotes. A name goes on up to an equals sign, a value passes it.
enum class TAttrMark : uint8_t { kNone, kEquals, kSpace, kQuote };

inline constexpr auto kAttrMarks = [] {
  std::array<TAttrMark, 256> marks{};
  marks['='] = TAttrMark::kEquals;
  marks[' '] = marks['\n'] = TAttrMark::kSpace;
  marks['"'] = marks['\''] = TAttrMark::kQuote;
  return marks;
}();

inline TAttrMark AttrMarkOf(char c) noexcept { return kAttrMarks[static_cast<unsigned char>(c)]; }

/// The first character from there on that means at least that; the size without one.
inline size_t FindAttrMark(std::string_view text, TAttrMark least, size_t at) noexcept {
  const auto isMark = [least](char c) { return AttrMarkOf(c) >= least; };
  const char* const end = text.data() + text.size();
  return static_cast<size_t>(std::find_if(text.data() + at, end, isMark) - text.data());
}

/// One attribute where it stands.
struct TAttrView {
  std::string_view name;
  std::string_view value;  ///< all behind the "=", with its quotes; empty without "="
  int32_t lineBreaks = 0;  ///< line feeds in the white space behind it
  int32_t blanks = 0;      ///< blanks behind the last of them
};

/// Reads the text of all attributes, one after another. It borrows the text, which is copied only
/// when it holds a carriage return: these count nowhere.
class TAttrReader {
 public:
  explicit TAttrReader(std::string_view text) : text_(Trim(text)) {
    if (text_.find('\r') != std::string_view::npos) DropReturns();
  }
  TAttrReader(const TAttrReader&) = delete;
  TAttrReader& operator=(const TAttrReader&) = delete;

  /// Reads the next attribute; false at the end, or when a quote stays open.
  bool Next() noexcept;
  /// The attribute read last. Its views are valid as long as the text and the reader.
  const TAttrView& Attribute() const noexcept { return attribute_; }
  /// Whether it would be written as it stands; a blank behind the last attribute does not count.
  bool IsAsWritten() const noexcept;

  /// The place of the attribute with the white space behind it, in the text that is read.
  size_t Start() const noexcept { return start_; }
  size_t NameEnd() const noexcept { return start_ + attribute_.name.size(); }
  size_t End() const noexcept { return at_; }
  bool IsAtEnd() const noexcept { return at_ == text_.size(); }
  std::string_view Slice(size_t from, size_t to) const noexcept {
    return text_.substr(from, to - from);
  }

 private:
  void DropReturns();
  void ReadSpace() noexcept;

  std::string withoutReturns_;
  std::string_view text_;
  size_t start_ = 0;
  size_t at_ = 0;
  TAttrView attribute_;
  bool hasEquals_ = false;
};

inline bool TAttrReader::Next() noexcept {
  if (at_ == text_.size()) return false;
  const size_t nameEnd = FindAttrMark(text_, TAttrMark::kEquals, at_);
  const bool hasEquals = nameEnd < text_.size() && text_[nameEnd] == '=';
  size_t end = hasEquals ? FindAttrMark(text_, TAttrMark::kSpace, nameEnd + 1) : nameEnd;
  if (end < text_.size() && AttrMarkOf(text_[end]) == TAttrMark::kQuote) {
    end = text_.find(text_[end], end + 1);
    if (end == std::string_view::npos) return false;
    ++end;
  }
  attribute_.name = text_.substr(at_, (hasEquals ? nameEnd : end) - at_);
  attribute_.value = hasEquals ? text_.substr(nameEnd + 1, end - nameEnd - 1) : std::string_view();
  hasEquals_ = hasEquals;
  start_ = at_;
  at_ = end;
  ReadSpace();
  return true;
}

inline bool TAttrReader::IsAsWritten() const noexcept {
  const bool keepsSpace =
      attribute_.lineBreaks == 0 && (attribute_.blanks > 0 || at_ == text_.size());
  return keepsSpace && (!hasEquals_ || !attribute_.value.empty());
}

inline void TAttrReader::ReadSpace() noexcept {
  int32_t lineBreaks = 0;
  int32_t blanks = 0;
  for (; at_ < text_.size() && AttrMarkOf(text_[at_]) == TAttrMark::kSpace; ++at_) {
    const bool isBreak = text_[at_] == '\n';
    lineBreaks += isBreak ? 1 : 0;
    blanks = isBreak ? 0 : blanks + 1;
  }
  attribute_.lineBreaks = lineBreaks;
  attribute_.blanks = blanks;
}

/// `name=value`, without "=" for an empty value.
inline void AppendAttribute(std::string& text, std::string_view name, std::string_view value) {
  text += name;
  if (value.empty()) return;
  text += '=';
  text += value;
}

/// The attribute and the white space behind it, at least one blank.
inline void AppendWithSpace(std::string& text, const TAttrView& attribute) {
  AppendAttribute(text, attribute.name, attribute.value);
  for (int32_t i = 0; i < attribute.lineBreaks; ++i) text += "\r\n";
  if (attribute.blanks > 0) {
    text.append(static_cast<size_t>(attribute.blanks), ' ');
  } else if (attribute.lineBreaks == 0) {
    text += ' ';
  }
}

/// Writes the text of all attributes anew. `change` gets each attribute (a TAttrView) and gives
/// what is to stand behind its name, "=" and a value that ends in no blank, or nothing (a
/// std::optional<std::string_view>). One blank follows a changed attribute.
template <class TChange>
void AppendAttributes(std::string& text, std::string_view attributes, const TChange& change) {
  TAttrReader reader(attributes);
  size_t done = 0;
  while (reader.Next()) {
    if (const std::optional<std::string_view> value = change(reader.Attribute())) {
      text += reader.Slice(done, reader.NameEnd());
      text += *value;
      if (!reader.IsAtEnd()) text += ' ';
    } else if (!reader.IsAsWritten()) {
      text += reader.Slice(done, reader.Start());
      AppendWithSpace(text, reader.Attribute());
    } else {
      continue;
    }
    done = reader.End();
  }
  if (done < reader.End()) text += reader.Slice(done, reader.End());
}

/// Writes a tag anew, as a tag object would: `start` ("<", its name and a blank) and the
/// attributes, as AppendAttributes does. No blank stands in front of the ">".
template <class TChange>
void AppendTag(std::string& text, std::string_view start, std::string_view attributes,
               const TChange& change) {
  text += start;
  AppendAttributes(text, attributes, change);
  if (text.back() == ' ') {
    text.back() = '>';
  } else {
    text += '>';
  }
}

/// The value, as written, of the first attribute of that name (letter case ignored); empty when
/// there is none.
std::string ValueOf(std::string_view attributes, std::string_view name);

}  // namespace quarda
