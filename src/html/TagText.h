// The text of one tag, read and written without a tag object.
#pragma once

#include <cstddef>
#include <cstdint>
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
  explicit TAttrReader(std::string_view text);
  TAttrReader(const TAttrReader&) = delete;
  TAttrReader& operator=(const TAttrReader&) = delete;

  /// Reads the next attribute; false at the end, or when a quote stays open.
  bool Next() noexcept;
  /// The attribute read last. Its views are valid as long as the text and the reader.
  TAttrView& Attribute() noexcept { return attribute_; }
  /// Whether it would be written as it stands; a blank behind the last attribute does not count.
  bool IsAsWritten() const noexcept;

  /// The place of the attribute with the white space behind it, in the text that is read.
  size_t Start() const noexcept { return start_; }
  size_t End() const noexcept { return at_; }
  std::string_view Slice(size_t from, size_t to) const noexcept {
    return text_.substr(from, to - from);
  }

 private:
  void ReadSpace() noexcept;

  std::string withoutReturns_;
  std::string_view text_;
  size_t start_ = 0;
  size_t at_ = 0;
  TAttrView attribute_;
  bool hasEquals_ = false;
};

/// `name=value`, without "=" for an empty value.
void AppendAttribute(std::string& text, std::string_view name, std::string_view value);
/// The attribute and the white space behind it, at least one blank.
void AppendWithSpace(std::string& text, const TAttrView& attribute);

/// Writes a tag anew, as a tag object would: `start` ("<" and its name) and the attributes.
/// `change` gets each attribute (a TAttrView) and tells whether it altered it.
template <class TChange>
void AppendTag(std::string& text, std::string_view start, std::string_view attributes,
               const TChange& change) {
  text += start;
  const size_t before = text.size();
  if (!attributes.empty()) {
    TAttrReader reader(attributes);
    size_t done = 0;
    while (reader.Next()) {
      if (text.size() == before) text += ' ';
      if (!change(reader.Attribute()) && reader.IsAsWritten()) continue;
      text += reader.Slice(done, reader.Start());
      AppendWithSpace(text, reader.Attribute());
      done = reader.End();
    }
    text += reader.Slice(done, reader.End());
    if (text.back() == ' ') text.pop_back();  // stands between attributes only
  }
  text += '>';
}

/// The value, as written, of the first attribute of that name (letter case ignored); empty when
/// there is none.
std::string ValueOf(std::string_view attributes, std::string_view name);

}  // namespace quarda
