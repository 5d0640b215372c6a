#include "TagText.h"

#include <CodePage.h>
#include <Utils.h>

#include <algorithm>
#include <array>

namespace quarda {
namespace {

/// What a character means outside quotes. A name goes on up to an equals sign, a value passes it.
enum class TMark : uint8_t { kNone, kEquals, kSpace, kQuote };

constexpr auto kMarks = [] {
  std::array<TMark, 256> marks{};
  marks['='] = TMark::kEquals;
  marks[' '] = marks['\n'] = TMark::kSpace;
  marks['"'] = marks['\''] = TMark::kQuote;
  return marks;
}();

TMark MarkOf(char c) noexcept { return kMarks[static_cast<unsigned char>(c)]; }

/// The first character from there on that means at least that; the size without one.
size_t FindMark(std::string_view text, TMark least, size_t at) noexcept {
  while (at < text.size() && MarkOf(text[at]) < least) ++at;
  return at;
}

std::string_view WithoutBrackets(std::string_view tagText) noexcept {
  if (tagText.starts_with('<')) tagText.remove_prefix(1);
  if (tagText.ends_with('>')) tagText.remove_suffix(1);
  return tagText;
}

}  // namespace

TTagParts SplitTag(std::string_view tagText) noexcept {
  std::string_view rest = WithoutBrackets(tagText);
  size_t nameSize = 0;
  while (nameSize < rest.size() && !EndsTagName(rest[nameSize])) ++nameSize;
  std::string_view name = rest.substr(0, nameSize);
  rest.remove_prefix(std::min(nameSize + 1, rest.size()));
  if (rest.starts_with('\r') || rest.starts_with('\n')) rest.remove_prefix(1);
  if (name.ends_with('/')) name.remove_suffix(1);
  return {name, rest};
}

TAttrReader::TAttrReader(std::string_view text) : text_(text) {
  if (text_.empty()) return;
  text_ = Trim(text_);
  if (text_.find('\r') == std::string_view::npos) return;
  withoutReturns_ = DelChars(text_, "\r");
  text_ = withoutReturns_;
}

bool TAttrReader::Next() noexcept {
  if (at_ == text_.size()) return false;
  const size_t nameEnd = FindMark(text_, TMark::kEquals, at_);
  const bool hasEquals = nameEnd < text_.size() && text_[nameEnd] == '=';
  size_t end = hasEquals ? FindMark(text_, TMark::kSpace, nameEnd + 1) : nameEnd;
  if (end < text_.size() && MarkOf(text_[end]) == TMark::kQuote) {
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

bool TAttrReader::IsAsWritten() const noexcept {
  const bool keepsSpace =
      attribute_.lineBreaks == 0 && (attribute_.blanks > 0 || at_ == text_.size());
  return keepsSpace && (!hasEquals_ || !attribute_.value.empty());
}

void TAttrReader::ReadSpace() noexcept {
  int32_t lineBreaks = 0;
  int32_t blanks = 0;
  for (; at_ < text_.size() && MarkOf(text_[at_]) == TMark::kSpace; ++at_) {
    const bool isBreak = text_[at_] == '\n';
    lineBreaks += isBreak ? 1 : 0;
    blanks = isBreak ? 0 : blanks + 1;
  }
  attribute_.lineBreaks = lineBreaks;
  attribute_.blanks = blanks;
}

void AppendAttribute(std::string& text, std::string_view name, std::string_view value) {
  text += name;
  if (value.empty()) return;
  text += '=';
  text += value;
}

void AppendWithSpace(std::string& text, const TAttrView& attribute) {
  AppendAttribute(text, attribute.name, attribute.value);
  for (int32_t i = 0; i < attribute.lineBreaks; ++i) text += "\r\n";
  if (attribute.blanks > 0) {
    text.append(static_cast<size_t>(attribute.blanks), ' ');
  } else if (attribute.lineBreaks == 0) {
    text += ' ';
  }
}

std::string ValueOf(std::string_view attributes, std::string_view name) {
  if (attributes.empty()) return {};
  for (TAttrReader reader(attributes); reader.Next();) {
    if (platform::SameAnsiText(reader.Attribute().name, name)) {
      return std::string(reader.Attribute().value);
    }
  }
  return {};
}

}  // namespace quarda
