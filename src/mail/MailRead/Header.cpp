// Fields are cut out of the header's text as slices, in one pass. Unfolding and splitting a value
// wait until somebody asks, and most fields of most mails are never asked for.
#include "Header.h"

#include <algorithm>
#include <cstring>
#include <tuple>
#include <utility>

#include "AsciiText.h"
#include "HeaderText.h"
#include "LineScan.h"
#include "TextStreamer.h"

namespace quarda {
namespace {

constexpr std::string_view kSeparator = "; ";
constexpr std::string_view kFoldedSeparator = ";\r\n\t";

std::string_view RequireName(std::string_view name) {
  const std::string_view trimmed = TrimmedText(name);
  if (trimmed.empty()) {
    throw EMailHeaderError("\"" + std::string(name) +
                           "\" ist kein g\xFCltiger Name f\xFCr ein Header-Element.");
  }
  return trimmed;
}

bool IsContinuation(std::string_view line) noexcept {
  return line.front() == ' ' || line.front() == '\t';
}

// Name and value of the first line of a field; without a colon all of it is the name.
std::pair<std::string_view, std::string_view> SplitAtColon(std::string_view line) noexcept {
  const size_t colon = line.find(':');
  if (colon == std::string_view::npos) return {line, line.substr(line.size())};
  return {line.substr(0, colon), line.substr(colon + 1)};
}

std::string_view Between(const char* begin, const char* end) noexcept {
  return {begin, static_cast<size_t>(end - begin)};
}

TTextBlock CopyOf(std::string_view text) {
  TTextBlock block(text.size());
  if (!text.empty()) std::memcpy(block.Data(), text.data(), text.size());
  return block;
}

// The text up to and with the first empty line.
std::string_view HeaderOf(std::string_view text) noexcept {
  std::string_view rest = text;
  while (!rest.empty() && !TakeLine(rest).empty()) {
  }
  return Between(text.data(), rest.empty() ? text.data() + text.size() : rest.data());
}

std::string ReadHeader(TTextStreamer& streamer) {
  std::string text;
  while (!streamer.IsEof()) {
    const std::string_view line = streamer.ReadLn();
    if (line.empty()) break;
    text.append(line).append("\r\n");
  }
  return text;
}

}  // namespace

THeaderItem::THeaderItem(THeader& header, std::string_view name)
    : header_(header), name_(RequireName(name)) {
  values_.SetObserver(&header);
}

void THeaderItem::SetValues(const TStringList& values) {
  if (&values != &values_) values_.Assign(values);
}

std::string THeaderItem::GetValue() const {
  return values_.IsEmpty() ? std::string() : std::string(values_[0]);
}

void THeaderItem::SetValue(std::string_view value) {
  if (values_.Count() <= 1 && GetValue() == value) return;
  const TStringListUpdate update(values_);
  const std::string kept(value);  // it may be a view of a line
  values_.Clear();
  if (!kept.empty()) values_.Add(kept);
}

std::string THeaderItem::GetValuesAsText() const {
  return values_.SeparateText(folded_ ? kFoldedSeparator : kSeparator);
}

void THeaderItem::SetValuesAsText(std::string_view text) {
  const TStringListUpdate update(values_);
  const std::string kept(text);  // it may be a view of a line
  values_.Clear();
  std::string_view rest = kept;
  for (std::string_view line; TakeValueLine(rest, line);) values_.Add(line);
}

void THeaderItem::Delete() {
  header_.Delete(static_cast<size_t>(header_.IndexOf(*this)));  // `this` is gone
}

void THeader::CheckIndex(size_t index) const {
  if (index < fields_.size()) return;
  RaiseListIndex(static_cast<ptrdiff_t>(index));
}

void THeader::Assign(const THeader& source) {
  if (&source == this) return;
  fields_.clear();
  fields_.reserve(source.fields_.size());
  block_ = source.block_;
  for (const TField& field : source.fields_) {
    if (field.item) {
      fields_.push_back(MakeField(field.name, {}));
      fields_.back().item->values_.Assign(field.item->values_);
    } else {
      fields_.push_back({field.name, field.raw, field.spansLines, false, nullptr});
    }
  }
  ChangeNotify();
}

void THeader::AddRead(TField& pending) {
  if (!pending.name.empty()) {  // else the line began with a colon
    pending.name = RequireName(pending.name);
    if (!pending.spansLines) pending.raw = TrimmedText(pending.raw);
    // Parts have few fields, mails some twenty: one allocation or two.
    if (fields_.size() == fields_.capacity()) {
      fields_.reserve(fields_.empty() ? 4 : std::max<size_t>(24, 2 * fields_.size()));
    }
    fields_.push_back(std::move(pending));
  }
  pending.spansLines = pending.folded = false;
}

// Returns how much of the text is header.
size_t THeader::ParseFields(std::string_view text) {
  std::string_view rest = text;
  TField pending;
  while (!rest.empty()) {
    const std::string_view line = TakeLine(rest);
    if (line.empty()) break;
    if (IsContinuation(line)) {
      if (!pending.name.empty()) {
        pending.raw = Between(pending.raw.data(), line.data() + line.size());
        pending.spansLines = pending.folded = true;
      }
      continue;
    }
    AddRead(pending);
    std::tie(pending.name, pending.raw) = SplitAtColon(line);
  }
  AddRead(pending);
  return text.size() - rest.size();
}

void THeader::LoadFromTextStreamer(TTextStreamer& streamer, bool share) {
  fields_.clear();
  if (!streamer.IsInMemory()) {
    block_ = CopyOf(ReadHeader(streamer));
    ParseFields(block_.View());
  } else if (share) {
    block_ = streamer.Block();
    streamer.Skip(ParseFields(streamer.Rest()));
  } else {
    block_ = CopyOf(HeaderOf(streamer.Rest()));
    streamer.Skip(block_.Size());
    ParseFields(block_.View());
  }
  modified_ = false;
}

void THeader::LoadFromStrings(const TStringList& lines) {
  fields_.clear();
  std::string_view name;
  std::string value;
  bool folded = false;
  const auto flush = [&] {
    if (name.empty()) return;
    fields_.push_back(MakeField(name, {}));
    fields_.back().item->folded_ = folded;
    fields_.back().item->SetValuesAsText(value);
  };
  for (size_t i = 0; i < lines.Count() && !lines[i].empty(); ++i) {
    if (IsContinuation(lines[i])) {
      value.append(lines[i]);
      folded = true;
      continue;
    }
    flush();
    std::string_view untrimmed;
    std::tie(name, untrimmed) = SplitAtColon(lines[i]);
    value = TrimmedText(untrimmed);
    folded = false;
  }
  flush();
  modified_ = false;
}

void THeader::SaveToStrings(TStringList& lines) {
  for (size_t i = 0; i < fields_.size(); ++i) {
    lines.Add(std::string(NameOf(i)) + ": " + ValuesAsText(i));
  }
  modified_ = false;
}

void THeader::SaveToTextStreamer(TTextStreamer& streamer) {
  for (const TField& field : fields_) {
    streamer.Write(field.name);
    streamer.Write(": ");
    THeaderValues values(field);
    for (bool first = true; values.Next(); first = false) {
      if (!first) streamer.Write(values.Separator());
      streamer.Write(values.Line());
    }
    streamer.WriteLn({});
  }
  streamer.WriteLn({});
  modified_ = false;
}

void THeader::Clear() {
  fields_.clear();
  block_ = {};
  ChangeNotify();
}

THeader::TField THeader::MakeField(std::string_view name, std::string_view value) {
  TField field;
  field.item = std::make_unique<THeaderItem>(*this, name);
  field.name = field.item->GetName();
  if (!value.empty()) field.item->values_.Add(value);
  return field;
}

THeaderItem& THeader::Add(std::string_view name, std::string_view value) {
  return Insert(fields_.size(), name, value);
}

THeaderItem& THeader::Insert(size_t index, std::string_view name, std::string_view value) {
  if (index != fields_.size()) CheckIndex(index);
  const auto place = fields_.begin() + static_cast<ptrdiff_t>(index);
  THeaderItem& item = *fields_.insert(place, MakeField(name, value))->item;
  ChangeNotify();
  return item;
}

void THeader::Delete(size_t index) {
  CheckIndex(index);
  fields_.erase(fields_.begin() + static_cast<ptrdiff_t>(index));
  ChangeNotify();
}

void THeader::Delete(std::string_view name) {
  const ptrdiff_t index = IndexOf(name);
  if (index >= 0) Delete(static_cast<size_t>(index));
}

THeaderItem& THeader::Replace(std::string_view name, std::string_view value) {
  THeaderItem* const item = GetHeader(name);
  if (!item) return Add(name, value);
  item->SetValue(value);
  return *item;
}

ptrdiff_t THeader::IndexOf(std::string_view name) const noexcept {
  for (size_t i = 0; i < fields_.size(); ++i) {
    if (SameAscii(fields_[i].name, name)) return static_cast<ptrdiff_t>(i);
  }
  return -1;
}

ptrdiff_t THeader::IndexOf(const THeaderItem& item) const noexcept {
  for (size_t i = 0; i < fields_.size(); ++i) {
    if (fields_[i].item.get() == &item) return static_cast<ptrdiff_t>(i);
  }
  return -1;
}

THeaderItem& THeader::ItemOf(TField& field) {
  if (field.item) return *field.item;
  auto item = std::make_unique<THeaderItem>(*this, field.name);
  item->folded_ = field.folded;
  const TTextBlock block = field.spansLines ? CopyOf(Unfold(field.raw)) : block_;
  std::string_view rest = field.spansLines ? block.View() : field.raw;
  item->values_.Keep(block);
  for (std::string_view line; TakeValueLine(rest, line);) item->values_.AddSlice(line);
  field.item = std::move(item);
  field.name = field.item->name_;
  return *field.item;
}

THeaderItem& THeader::GetItems(size_t index) {
  CheckIndex(index);
  return ItemOf(fields_[index]);
}

THeaderItem* THeader::GetHeader(std::string_view name) {
  const ptrdiff_t index = IndexOf(name);
  return index < 0 ? nullptr : &ItemOf(fields_[static_cast<size_t>(index)]);
}

std::string THeader::GetHeaderStr(std::string_view name) const {
  THeaderValues values(*this, name);
  return values.Next() ? std::string(values.Line()) : std::string();
}

std::string_view THeader::NameOf(size_t index) const {
  CheckIndex(index);
  return fields_[index].name;
}

std::string THeader::ValuesAsText(size_t index) const {
  CheckIndex(index);
  THeaderValues values(fields_[index]);
  std::string text;
  for (bool first = true; values.Next(); first = false) {
    if (!first) text.append(values.Separator());
    text.append(values.Line());
  }
  return text;
}

THeaderValues::THeaderValues(const THeader& header, std::string_view name) {
  const ptrdiff_t index = header.IndexOf(name);
  if (index >= 0) Start(header.fields_[static_cast<size_t>(index)]);
}

void THeaderValues::Start(const THeader::TField& field) {
  field_ = &field;
  rest_ = field.raw;
  if (field.item || !field.spansLines) return;
  unfolded_ = Unfold(field.raw);
  rest_ = unfolded_;
}

bool THeaderValues::Next() {
  if (!field_) return false;
  if (!field_->item) return TakeValueLine(rest_, line_);
  const TStringList& values = field_->item->GetValues();
  if (index_ >= values.Count()) return false;
  line_ = values[index_++];
  return true;
}

std::string_view THeaderValues::Separator() const noexcept {
  const bool folded = field_->item ? field_->item->IsFolded() : field_->folded;
  return folded ? kFoldedSeparator : kSeparator;
}

}  // namespace quarda
