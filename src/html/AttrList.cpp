#include "AttrList.h"

#include <CodePage.h>
#include <Utils.h>

#include <algorithm>
#include <numeric>
#include <utility>

#include "TagText.h"

namespace quarda {
namespace {

/// Of a list without changes in between, so many look-ups search it one by one; then it is sorted.
constexpr size_t kSearches = 16;

}  // namespace

void TAttrList::Clear() {
  pending_.reset();
  attributes_.clear();
  ForgetSearches();
}

void TAttrList::Parse(std::string_view text) {
  Clear();
  for (TAttrReader reader(text); reader.Next();) {
    const TAttrView& read = reader.Attribute();
    attributes_.push_back(
        {std::string(read.name), std::string(read.value), read.lineBreaks, read.blanks});
  }
}

void TAttrList::Prepare() {
  if (!pending_) return;
  const std::string text = std::move(*pending_);
  Parse(text);
}

void TAttrList::ParseOne(std::string_view text, std::string& name, std::string& value) {
  size_t equals = 0;
  for (; equals < text.size() && text[equals] != '='; ++equals) {
    const char c = text[equals];
    if (c == '"' || c == '\'') equals = std::min(text.find(c, equals + 1), text.size() - 1);
  }
  const std::string_view rest = text.substr(equals);
  std::string newValue(rest.empty() ? rest : rest.substr(1));  // the text may be one of the results
  name = std::string(text.substr(0, equals));
  value = std::move(newValue);
}

void TAttrList::SetAsString(std::string text) {
  Clear();
  pending_ = std::move(text);
}

std::string TAttrList::GetAsString() const {
  if (pending_) return *pending_;
  std::string text;
  for (const TTagAttr& attribute : attributes_) {
    AppendWithSpace(text,
                    {attribute.name, attribute.value, attribute.lineBreaks, attribute.blanks});
  }
  if (text.ends_with(' ')) text.pop_back();
  return text;
}

std::string TAttrList::GetAsProperString() const {
  std::string text;
  if (pending_) {
    for (const char c : *pending_) {
      const char written = c == '\n' ? ' ' : c;
      if (c != '\r' && !(written == ' ' && text.ends_with(' '))) text += written;
    }
    return std::string(Trim(text));
  }
  for (const TTagAttr& attribute : attributes_) {
    if (&attribute != attributes_.data()) text += ' ';
    AppendAttribute(text, attribute.name, attribute.value);
  }
  return text;
}

TTagAttr* TAttrList::Attribute(int32_t index) {
  Prepare();
  const bool isInside = index >= 0 && static_cast<size_t>(index) < attributes_.size();
  return isInside ? &attributes_[static_cast<size_t>(index)] : nullptr;
}

void TAttrList::ForgetSearches() {
  sorted_.clear();
  searches_ = 0;
}

void TAttrList::Add(TTagAttr attribute) {
  ForgetSearches();
  attributes_.push_back(std::move(attribute));
}

int32_t TAttrList::GetCount() {
  Prepare();
  return static_cast<int32_t>(attributes_.size());
}

bool TAttrList::HasAttr(int32_t index) { return Attribute(index) != nullptr; }

bool TAttrList::HasAttrName(std::string_view name) { return FindFirst(name) >= 0; }

void TAttrList::SortNames() {
  sorted_.resize(attributes_.size());
  std::iota(sorted_.begin(), sorted_.end(), 0u);
  std::ranges::stable_sort(sorted_, [this](uint32_t a, uint32_t b) {
    return platform::CompareAnsiText(attributes_[a].name, attributes_[b].name) < 0;
  });
}

int32_t TAttrList::FindFirst(std::string_view name) {
  Prepare();
  if (searches_ < kSearches) {
    ++searches_;
    const auto found = std::ranges::find_if(attributes_, [name](const TTagAttr& attribute) {
      return platform::SameAnsiText(attribute.name, name);
    });
    return found == attributes_.end() ? -1 : static_cast<int32_t>(found - attributes_.begin());
  }
  if (sorted_.empty()) SortNames();
  const auto found = std::ranges::lower_bound(
      sorted_, name,
      [](std::string_view a, std::string_view b) { return platform::CompareAnsiText(a, b) < 0; },
      [this](uint32_t index) { return std::string_view(attributes_[index].name); });
  if (found == sorted_.end() || !platform::SameAnsiText(attributes_[*found].name, name)) return -1;
  return static_cast<int32_t>(*found);
}

int32_t TAttrList::FindAttribute(std::string_view name, bool caseSensitive) {
  if (!caseSensitive) return FindFirst(name);
  Prepare();
  const auto found = std::ranges::find(attributes_, name, &TTagAttr::name);
  return found == attributes_.end() ? -1 : static_cast<int32_t>(found - attributes_.begin());
}

std::string TAttrList::GetNames(int32_t index) {
  const TTagAttr* attribute = Attribute(index);
  return attribute ? attribute->name : std::string();
}

void TAttrList::SetNames(int32_t index, std::string_view name) {
  TTagAttr* attribute = Attribute(index);
  if (!attribute) return;
  if (name.empty()) {
    Delete(index);
    return;
  }
  *attribute = {std::string(name), std::move(attribute->value), 0, 0};
  ForgetSearches();
}

std::string TAttrList::GetValues(int32_t index) {
  const TTagAttr* attribute = Attribute(index);
  return attribute ? attribute->value : std::string();
}

void TAttrList::SetValues(int32_t index, std::string_view value) {
  TTagAttr* attribute = Attribute(index);
  if (attribute) *attribute = {std::move(attribute->name), NeedQuotations(value), 0, 0};
}

std::string TAttrList::GetValue(std::string_view name) { return GetValues(FindFirst(name)); }

void TAttrList::SetValue(std::string_view name, std::string_view value) {
  const int32_t index = FindFirst(name);
  if (index >= 0) {
    SetValues(index, value);
  } else {
    Add({std::string(name), NeedQuotations(value), 0, 0});
  }
}

std::string TAttrList::GetAttrStrings(int32_t index) {
  std::string text;
  if (const TTagAttr* attribute = Attribute(index))
    AppendAttribute(text, attribute->name, attribute->value);
  return text;
}

void TAttrList::SetAttrStrings(int32_t index, std::string_view text) {
  TTagAttr* attribute = Attribute(index);
  if (!attribute) return;
  if (text.empty()) {
    Delete(index);
    return;
  }
  TTagAttr changed;
  ParseOne(text, changed.name, changed.value);
  *attribute = std::move(changed);
  ForgetSearches();
}

std::string TAttrList::GetAttrString(std::string_view name) {
  return GetAttrStrings(FindFirst(name));
}

void TAttrList::SetAttrString(std::string_view name, std::string_view text) {
  const int32_t index = FindFirst(name);
  if (index >= 0) {
    SetAttrStrings(index, text);
  } else if (!text.empty()) {
    TTagAttr added;
    ParseOne(text, added.name, added.value);
    Add(std::move(added));
  }
}

bool TAttrList::Delete(int32_t index) {
  if (!Attribute(index)) return false;
  attributes_.erase(attributes_.begin() + index);
  ForgetSearches();
  return true;
}

void TAttrList::DeleteName(std::string_view name) { Delete(FindFirst(name)); }

std::string NeedQuotations(std::string_view value) {
  const bool isQuoted = value.starts_with('"') || value.starts_with('\'');
  const size_t special = value.find_first_of(" !\"'<=>");
  if (isQuoted || special == std::string_view::npos) return std::string(value);
  const char quote = value[special] == '"' ? '\'' : '"';
  return quote + std::string(value) + quote;
}

std::string TAttrListGuard::GetAsString() {
  if (attributes_.GetCount() == 0) return Concat({"<", name_, ">"});
  return Concat({"<", name_, " ", attributes_.GetAsString(), ">"});
}

void TAttrListGuard::SetAsString(std::string_view tagText) {
  std::string attrText;
  TagStringToComponents(tagText, name_, attrText);
  attributes_.SetAsString(std::move(attrText));
}

void TAttrListGuard::SetTagName(std::string_view name) {
  if (const std::string_view trimmed = Trim(name); !trimmed.empty()) name_ = std::string(trimmed);
}

std::string TAttrListGuard::GetUpperTagName() const { return platform::UpperAnsi(name_); }

TAttrListGuardRef ParseTag(std::string_view tagText, int32_t start, int32_t end) {
  auto tag = std::make_shared<TAttrListGuard>(start, end);
  tag->SetAsString(tagText);
  return tag;
}

std::string_view TagNameOf(std::string_view tagText) noexcept { return SplitTag(tagText).name; }

void TagStringToComponents(std::string_view tagText, std::string& name, std::string& attrText) {
  const TTagParts parts = SplitTag(tagText);
  std::string newName(parts.name);  // the text may be one of the results
  attrText = std::string(parts.attributes);
  name = std::move(newName);
}

std::string LineFeed(int32_t count) {
  std::string text;
  for (; count > 0; --count) text += "\r\n";
  return text;
}

}  // namespace quarda
