#include "MailPart.h"

#include <Files.h>
#include <Memory.h>
#include <Streams.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <optional>

#include "Addresses.h"
#include "AsciiText.h"
#include "Encodings.h"
#include "LineScan.h"
#include "Mail.h"
#include "TextStreamer.h"

namespace quarda {
namespace {

constexpr std::string_view kContentType = "Content-Type";
constexpr std::string_view kDisposition = "Content-Disposition";
constexpr std::string_view kTransferEncoding = "Content-Transfer-Encoding";
constexpr uint64_t kMemoryToSpare = 524288;
constexpr uint64_t kLargestBlock = 15728640;

bool FitsIntoMemory(uint64_t size) {
  const uint64_t available = platform::AvailablePhysicalMemory();
  return size < kLargestBlock && available > kMemoryToSpare &&
         size * 2 < available - kMemoryToSpare;
}

// The value of a line `name=value`, or nothing when it is another one.
std::optional<std::string_view> ValueOf(std::string_view line, std::string_view name) noexcept {
  if (line.size() <= name.size() || line[name.size()] != '=' ||
      !SameAscii(line.substr(0, name.size()), name)) {
    return std::nullopt;
  }
  return line.substr(name.size() + 1);
}

std::string_view TypeOf(std::string_view contentType) noexcept {
  return contentType.substr(0, contentType.find('/'));
}

std::string Quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

}  // namespace

TMailPart::TMailPart(TMail* mail, TMailPart* parent) noexcept : mail_(mail), parent_(parent) {}

TMailPart::~TMailPart() {
  if (!parts_.empty()) DestroyAll(std::move(parts_));
}

// Takes the tree apart level by level, so that no destructor finds children to destroy.
void TMailPart::DestroyAll(TParts parts) noexcept {
  while (!parts.empty()) {
    TParts children = std::move(parts.back()->parts_);
    parts.back()->parts_.clear();
    parts.pop_back();
    std::ranges::move(children, std::back_inserter(parts));
  }
}

void TMailPart::TPartHeader::ChangeNotify() {
  THeader::ChangeNotify();
  if (part_.mail_) part_.mail_->lists_.NoteChanged(part_);
}

void TMailPart::NotifyMail() {
  if (mail_) mail_->MailPartModified();
}

void TMailPart::NotifyReordered() {
  if (mail_) mail_->lists_.NoteReordered();
  NotifyMail();
}

void TMailPart::CheckIndex(size_t index) const {
  if (index < parts_.size()) return;
  throw EListError("List index out of bounds (" + std::to_string(static_cast<ptrdiff_t>(index)) +
                   ")");
}

TMailPart& TMailPart::Append() {
  parts_.push_back(std::make_unique<TMailPart>(mail_, this));
  parts_.back()->indexHint_ = parts_.size() - 1;
  return *parts_.back();
}

TMailPart& TMailPart::Add() {
  TMailPart& part = Append();
  if (mail_) mail_->lists_.NoteAdded(part);
  SetModified(true);
  return part;
}

void TMailPart::Delete(size_t index) {
  CheckIndex(index);
  if (mail_) mail_->lists_.Forget(*parts_[index]);
  parts_.erase(parts_.begin() + static_cast<ptrdiff_t>(index));
  NotifyMail();
  SetModified(true);
}

void TMailPart::Delete(const TMailPart& part) {
  const ptrdiff_t index = IndexOf(part);
  if (index >= 0) Delete(static_cast<size_t>(index));
}

ptrdiff_t TMailPart::IndexOf(const TMailPart& part) const noexcept {
  if (part.parent_ != this) return -1;
  const auto isHinted = [&] {
    return part.indexHint_ < parts_.size() && parts_[part.indexHint_].get() == &part;
  };
  // Wrong hints are put right for all children at once, so that asking every child is linear.
  if (!isHinted()) {
    for (size_t i = 0; i < parts_.size(); ++i) parts_[i]->indexHint_ = i;
  }
  return isHinted() ? static_cast<ptrdiff_t>(part.indexHint_) : -1;
}

void TMailPart::Move(size_t from, size_t to) {
  CheckIndex(from);
  CheckIndex(to);
  const auto at = [&](size_t index) { return parts_.begin() + static_cast<ptrdiff_t>(index); };
  if (from < to) {
    std::rotate(at(from), at(from + 1), at(to + 1));
  } else {
    std::rotate(at(to), at(from), at(from + 1));
  }
  NotifyReordered();
  SetModified(true);
}

void TMailPart::Exchange(size_t index1, size_t index2) {
  CheckIndex(index1);
  CheckIndex(index2);
  std::swap(parts_[index1], parts_[index2]);
  NotifyReordered();
  SetModified(true);
}

void TMailPart::Clear() {
  if (mail_) mail_->lists_.ForgetChildren(*this);
  DestroyAll(std::exchange(parts_, {}));
  NotifyMail();
  SetModified(true);
}

TMailPart& TMailPart::GetParts(size_t index) const {
  CheckIndex(index);
  return *parts_[index];
}

void TMailPart::SetParts(size_t index, TMailPart& part) {
  CheckIndex(index);
  if (parts_[index].get() != &part) parts_[index]->Assign(part);
  NotifyMail();
  SetModified(true);
}

void TMailPart::AssignOwn(TMailPart& source) {
  header_.Assign(source.header_);
  source.LoadBody();
  UseLines();
  if (source.lines_) {
    Lines().Assign(*source.lines_);
  } else if (lines_) {
    lines_->Clear();
  }
  if (source.body_ == TBodyState::kText) UseText(source.textBlock_, source.text_);
  modified_ = true;
}

// Copies with this part as their parent; they are complete before anything of this part is
// destroyed, because the source may lie below it.
TMailPart::TParts TMailPart::CopyChildren(TMailPart& source) {
  TParts copies;
  std::vector<std::pair<TMailPart*, TMailPart*>> pending;
  for (const auto& child : source.parts_) {
    copies.push_back(std::make_unique<TMailPart>(mail_, this));
    pending.emplace_back(child.get(), copies.back().get());
  }
  while (!pending.empty()) {
    const auto [from, to] = pending.back();
    pending.pop_back();
    to->AssignOwn(*from);
    for (const auto& child : from->parts_) pending.emplace_back(child.get(), &to->Append());
  }
  return copies;
}

void TMailPart::Assign(TMailPart& source) {
  if (&source == this) return;
  TParts children = CopyChildren(source);
  AssignOwn(source);
  if (mail_) mail_->lists_.ForgetChildren(*this);
  DestroyAll(std::exchange(parts_, std::move(children)));
  NotifyReordered();
  SetModified(true);
}

void TMailPart::SetHeader(const THeader& header) {
  if (&header != &header_) header_.Assign(header);
  NotifyMail();
}

TStringList& TMailPart::Lines() {
  if (!lines_) lines_ = std::make_unique<TStringList>();
  return *lines_;
}

// The lines hold the body from now on.
void TMailPart::UseLines() noexcept {
  body_ = TBodyState::kLines;
  textBlock_ = {};
  text_ = {};
}

// The text holds the body from now on, in place of the lines; those must be empty.
void TMailPart::UseText(TTextBlock block, std::string_view text) {
  body_ = TBodyState::kText;
  textBlock_ = std::move(block);
  text_ = text;
  if (lines_) SplitText();
}

void TMailPart::SplitText() {
  TStringList& lines = Lines();
  lines.Reserve(CountLineEnds(text_) + 1);
  lines.Keep(textBlock_);
  for (std::string_view rest = text_; !rest.empty();) lines.AddSlice(TakeLine(rest));
  UseLines();
}

TStringList& TMailPart::GetBody() {
  LoadBody();
  if (body_ == TBodyState::kText) SplitText();
  return Lines();
}

void TMailPart::SetBody(const TStringList& lines) {
  if (&lines != lines_.get()) {
    Lines().Assign(lines);
    UseLines();
  }
  SetModified(true);
}

void TMailPart::LoadBody() {
  if (body_ != TBodyState::kDeferred || !mail_) return;
  Lines().Clear();
  if (!platform::FileExists(mail_->GetMailFileName())) return;
  if (bodyEnd_ > bodyStart_) ReadDeferred();
  UseLines();  // only now: a body that could not be read is not an empty one
}

void TMailPart::ReadDeferred() {
  TFileStream file(mail_->GetMailFileName(), platform::TOpenMode::kReadShared);
  file.SetPosition(bodyStart_);
  const uint64_t size = bodyEnd_ - bodyStart_;
  if (FitsIntoMemory(size)) {
    TTextBlock block(static_cast<size_t>(size));
    const size_t got = file.Read(block.Data(), block.Size());
    if (got == block.Size()) {
      lines_->SetText(std::move(block));
    } else {
      lines_->SetText(block.View().substr(0, got));
    }
    return;
  }
  TTextStreamer streamer(file, TStreamerMode::kRead);
  while (streamer.GetPosition() < bodyEnd_ && !streamer.IsEof()) lines_->Add(streamer.ReadLn());
}

// Clears the marks of this part and of all below it.
void TMailPart::ClearMarks() noexcept {
  std::vector<TMailPart*> pending{this};
  while (!pending.empty()) {
    TMailPart& part = *pending.back();
    pending.pop_back();
    part.modified_ = false;
    part.header_.SetModified(false);
    for (const auto& child : part.parts_) pending.push_back(child.get());
  }
}

void TMailPart::SetModified(bool modified) noexcept {
  if (modified) {
    modified_ = true;
    header_.SetModified(true);
  } else {
    ClearMarks();
  }
  MarkAbove();
}

void TMailPart::MarkAbove() noexcept {
  // Above a marked part all are marked: clearing takes the whole tree below.
  for (TMailPart* part = parent_; part && !part->modified_; part = part->parent_) {
    part->modified_ = true;
    part->header_.SetModified(true);
  }
}

std::string TMailPart::Parameter(std::string_view field, std::string_view name) const {
  THeaderValues values(header_, field);
  while (values.Next()) {
    if (const auto value = ValueOf(values.Line(), name)) return RemoveQuotes(*value);
  }
  return {};
}

void TMailPart::SetParameter(std::string_view name, std::string_view value) {
  THeaderItem* item = header_.GetHeader(kContentType);
  if (!item) item = &header_.Add(kContentType, {});
  item->GetValues().SetValue(name, value.empty() ? std::string() : Quoted(value));
  SetModified(true);
}

// A part without children has no use for a boundary. This leaves an empty content type in a part
// that had none, which shows when the part is written the next time.
void TMailPart::DropStaleBoundary() {
  THeaderValues values(header_, kContentType);
  bool stale = !values.Found();
  while (!stale && values.Next()) stale = ValueOf(values.Line(), "boundary").has_value();
  if (stale) SetBoundary({});
}

// What the content type field says; empty when it says nothing.
std::string TMailPart::MainValue() const {
  THeaderValues values(header_, kContentType);
  while (values.Next()) {
    if (values.Line().find('=') == std::string_view::npos) return std::string(values.Line());
  }
  return {};
}

std::string TMailPart::GetContentType() const {
  std::string type = MainValue();
  if (type.empty() && !IsAttachment()) type = "text/plain";
  return type;
}

void TMailPart::SetContentType(std::string_view value) {
  if (THeaderItem* const item = header_.GetHeader(kContentType)) {
    TStringList& values = item->GetValues();
    size_t i = 0;
    while (i < values.Count() && values[i].find('=') != std::string_view::npos) ++i;
    if (i < values.Count()) {
      values.SetLine(i, value);
    } else {
      values.Insert(0, value);
    }
  } else {
    header_.Add(kContentType, value);
  }
  NotifyMail();
  SetModified(true);
}

std::string TMailPart::GetContentTypeType() const {
  const std::string type = GetContentType();
  return std::string(TypeOf(type));
}

std::string TMailPart::GetContentTypeSubType() const {
  const std::string type = GetContentType();
  return type.substr(type.find('/') + 1);  // npos + 1 is the whole
}

void TMailPart::SetContentTypeType(std::string_view type) {
  const std::string old = GetContentType();
  const size_t slash = old.find('/');
  SetContentType(std::string(type) +
                 (slash == std::string::npos ? std::string("/plain") : old.substr(slash)));
}

void TMailPart::SetContentTypeSubType(std::string_view subType) {
  const std::string old = GetContentType();
  const size_t slash = old.find('/');
  SetContentType((slash == std::string::npos ? std::string("text/") : old.substr(0, slash + 1))
                     .append(subType));
}

std::string TMailPart::GetContentTransferEncoding() const {
  THeaderValues values(header_, kTransferEncoding);
  if (!values.Found()) return "7bit";
  return values.Next() ? std::string(values.Line()) : std::string();
}

void TMailPart::SetContentTransferEncoding(std::string_view value) {
  header_.Replace(kTransferEncoding, value);
  SetModified(true);
}

mail::TEncodeType TMailPart::GetEncodeType() const {
  const std::string encoding = GetContentTransferEncoding();
  for (int type = mail::e8bit; type <= mail::eUUE; ++type) {
    if (SameAscii(encoding, mail::EncodeTypeNames[type])) {
      return static_cast<mail::TEncodeType>(type);
    }
  }
  return mail::eUnknown;
}

std::string TMailPart::GetBoundary() const { return Parameter(kContentType, "boundary"); }

void TMailPart::SetBoundary(std::string_view boundary) { SetParameter("boundary", boundary); }

std::string TMailPart::GetContentID() const { return header_.GetHeaderStr("Content-ID"); }

void TMailPart::SetContentID(std::string_view value) {
  if (value.empty()) {
    header_.Delete("Content-ID");
  } else {
    header_.SetHeaderStr("Content-ID", value);
  }
  SetModified(true);
}

std::string TMailPart::GetName() const { return DecodeHeader(Parameter(kContentType, "name")); }

void TMailPart::SetName(std::string_view name) { SetParameter("name", name); }

std::string TMailPart::GetFileName() const {
  std::string name = DecodeHeader(Parameter(kDisposition, "filename"));
  if (name.empty() && parent_ && IsAttachment()) {
    char number[24];
    std::snprintf(number, sizeof(number), "%05lld",
                  static_cast<long long>(parent_->IndexOf(*this)));
    name = std::string("Att").append(number).append(".txt");
  }
  return name;
}

void TMailPart::SetFileName(std::string_view fileName) {
  if (fileName.empty()) {
    header_.Delete(kDisposition);
  } else {
    THeaderItem* item = header_.GetHeader(kDisposition);
    if (!item) item = &header_.Add(kDisposition, {});
    const std::string parameter = "filename=" + Quoted(fileName);
    const TStringListUpdate update(item->GetValues());
    item->ClearValues();
    item->AddValue("attachment");
    item->AddValue(parameter);
  }
  NotifyMail();
  SetModified(true);
}

bool TMailPart::GetMultipartSection() const {
  return SameAscii(TypeOf(GetContentType()), "multipart");
}

void TMailPart::SetMultipartSection(bool multipart) {
  SetContentType(multipart ? "multipart/mixed" : "text/plain");
}

std::string TMailPart::BoundaryBegin() const {
  const std::string boundary = GetBoundary();
  return boundary.empty() ? boundary : "--" + boundary;
}

std::string TMailPart::BoundaryEnd() const {
  const std::string begin = BoundaryBegin();
  return begin.empty() ? begin : begin + "--";
}

bool TMailPart::HasDispositionOf(std::string_view value) const {
  THeaderValues values(header_, kDisposition);
  while (values.Next()) {
    if (SameAscii(values.Line(), value)) return true;
  }
  return false;
}

bool TMailPart::IsAttachment() const {
  if (header_.IndexOf(kDisposition) < 0) return false;
  if (HasDispositionOf("attachment") ||
      !DecodeHeader(Parameter(kDisposition, "filename")).empty() || !GetName().empty()) {
    return true;
  }
  if (!HasDispositionOf("inline")) return false;
  const ptrdiff_t index = header_.IndexOf(kContentType);
  if (index < 0) return true;
  const size_t field = static_cast<size_t>(index);
  const std::string text = std::string(header_.NameOf(field)) + ": " + header_.ValuesAsText(field);
  return text.find(" text/") == std::string::npos;
}

bool TMailPart::IsText() const { return SameAscii(TypeOf(GetContentType()), "text"); }

// What the document lists the part as. Fetches the boundary on the way.
TMailPart::TListing TMailPart::Classify(std::string* boundary) const {
  bool hasType = false;
  bool isMultipart = false;
  bool isText = true;  // also without a type
  THeaderValues values(header_, kContentType);
  while (values.Next()) {
    const std::string_view line = values.Line();
    if (line.find('=') == std::string_view::npos) {
      if (!std::exchange(hasType, true)) {
        const std::string_view type = TypeOf(line);
        isMultipart = SameAscii(type, "multipart");
        isText = line.empty() || SameAscii(type, "text");
      }
    } else if (boundary) {
      if (const auto value = ValueOf(line, "boundary")) {
        *boundary = RemoveQuotes(*value);
        boundary = nullptr;
      }
    }
    if (hasType && !boundary) break;
  }
  if (isMultipart) return TListing::kNone;
  return isText && !IsAttachment() ? TListing::kText : TListing::kAttachment;
}

}  // namespace quarda
