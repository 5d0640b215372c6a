#include "MailPart.h"

#include <Files.h>
#include <Memory.h>
#include <Streams.h>

#include <algorithm>
#include <functional>

#include "LineScan.h"
#include "Mail.h"
#include "TextStreamer.h"

namespace quarda {
namespace {

constexpr uint64_t kMemoryToSpare = 524288;
constexpr uint64_t kLargestBlock = 15728640;

bool FitsIntoMemory(uint64_t size) {
  const uint64_t available = platform::AvailablePhysicalMemory();
  return size < kLargestBlock && available > kMemoryToSpare &&
         size * 2 < available - kMemoryToSpare;
}

bool HasLoneCr(std::string_view text) noexcept {
  return static_cast<size_t>(std::ranges::count(text, '\r')) != CountCrLfs(text);
}

// Never 0.
size_t HashOf(std::string_view text) noexcept { return std::hash<std::string_view>()(text) | 1; }

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
  RaiseListIndex(static_cast<ptrdiff_t>(index));
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
  if (mail_) mail_->readBack_ = nullptr;
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
  if (parts_.empty()) return -1;
  if (parts_.front().get() == &part) return 0;  // deleting from the front moves all others
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
  if (mail_) mail_->readBack_ = nullptr;
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
  if (mail_) mail_->readBack_ = nullptr;
  DestroyAll(std::exchange(parts_, std::move(children)));
  NotifyReordered();
  SetModified(true);
}

void TMailPart::SetHeader(const THeader& header) {
  if (&header != &header_) header_.Assign(header);
  NotifyMail();
}

TStringList& TMailPart::Lines() {
  if (!lines_) lines_ = std::make_shared<TStringList>();
  return *lines_;
}

// The lines hold the body from now on.
void TMailPart::UseLines() noexcept {
  KeepReadBody();
  body_ = TBodyState::kLines;
  textBlock_ = {};
  text_ = {};
}

// The text holds the body from now on, in place of the lines; those must be empty.
void TMailPart::UseText(TTextBlock block, std::string_view text) {
  KeepReadBody();
  body_ = TBodyState::kText;
  isFromFile_ = false;
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

std::shared_ptr<TStringList> TMailPart::ShareBody() {
  const bool isReadBack = ReadBack();
  if (body_ == TBodyState::kText) {
    if (isReadBack) bodyHash_ = HashOf(text_);
    SplitText();
  }
  if (isReadBack) mail_->readBack_ = this;
  Lines();
  return lines_;
}

void TMailPart::DropBody() {
  if (lines_) lines_->Clear();
  UseLines();
}

void TMailPart::LoadBody() {
  KeepReadBody();
  if (body_ != TBodyState::kDeferred || !mail_) return;
  if (lines_) lines_->Clear();
  if (!platform::FileExists(mail_->GetMailFileName())) {
    if (bodyHash_ != 0) throw EError("The file of the mail is gone.");
    return;
  }
  if (bodyEnd_ > bodyStart_) {
    ReadDeferred();
  } else {
    UseLines();
  }
}

// A body that could not be read stays deferred: it is not an empty one.
void TMailPart::ReadDeferred() {
  TFileStream file(mail_->GetMailFileName(), platform::TOpenMode::kReadShared);
  file.SetPosition(bodyStart_);
  TTextBlock block(static_cast<size_t>(bodyEnd_ - bodyStart_));
  const std::string_view text = block.View().substr(0, file.Read(block.Data(), block.Size()));
  if (bodyHash_ != 0 && bodyHash_ != HashOf(text)) {
    throw EError("The file of the mail was changed while it was read.");
  }
  if (bodyHash_ == 0) splitsAtCr_ = FitsIntoMemory(block.Size()) && HasLoneCr(text);
  if (splitsAtCr_) {
    bodyHash_ = HashOf(text);
    Lines().Keep(block);
    Lines().AddSlices(text);
    UseLines();
  } else {
    UseText(std::move(block), text);
    isFromFile_ = body_ == TBodyState::kText;
  }
}

// Loads a deferred body that need not stay; whether it is one.
bool TMailPart::ReadBack() {
  if (!mail_ || (body_ != TBodyState::kDeferred && mail_->readBack_ != this)) return false;
  if (mail_->readBack_ == this) return true;
  mail_->ReleaseBody();
  LoadBody();
  const bool isRead = body_ != TBodyState::kDeferred;
  if (isRead) mail_->readBack_ = this;
  return isRead;
}

// Back to where it can be read again. Text that was split has its hash already.
void TMailPart::LetBodyGo() noexcept {
  if (body_ == TBodyState::kText && isFromFile_) {
    bodyHash_ = HashOf(text_);
  } else if (body_ != TBodyState::kLines || bodyHash_ == 0 || !lines_ || lines_.use_count() > 1 ||
             lines_->WasChanged()) {
    return;
  }
  lines_.reset();
  textBlock_ = {};
  text_ = {};
  body_ = TBodyState::kDeferred;
}

// The body stays in memory from now on: somebody may hold it, or it is about to be another one.
void TMailPart::KeepReadBody() noexcept {
  if (mail_ && mail_->readBack_ == this) mail_->readBack_ = nullptr;
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

}  // namespace quarda
