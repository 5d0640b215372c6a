// The innermost open part reads lines until one of three things ends its body: the input, its own
// boundary (a child begins) or its parent's boundary (it ends itself). No other boundary counts, so
// a line is compared with two boundaries at most, however deep the parts are nested, and only when
// it begins with "--". A body is one range of the source: in memory it becomes a slice, otherwise
// it is collected or left in the file.
#include "MailParser.h"

#include <cstring>

#include "AsciiText.h"
#include "Mail.h"
#include "TextStreamer.h"

namespace quarda {
namespace {

// Whether the line is "--", the boundary and the ending.
bool IsBoundary(std::string_view line, std::string_view boundary,
                std::string_view ending) noexcept {
  return !boundary.empty() && line.size() == 2 + boundary.size() + ending.size() &&
         line.ends_with(ending) && SameAscii(line.substr(2, boundary.size()), boundary);
}

}  // namespace

TMailParser::TMailParser(TMailPart& root, TTextStreamer& streamer)
    : streamer_(streamer),
      keepBodies_(!root.mail_ || root.mail_->KeepBodies),
      shareText_(keepBodies_ && !(root.mail_ && root.mail_->Releasable)),
      outerBoundary_(root.parent_ ? root.parent_->GetBoundary() : std::string()) {
  open_.push_back({&root, {}});
}

void TMailParser::Run() {
  TMailPart& root = *open_.back().part;
  open_.clear();
  Open(root);
  while (!open_.empty()) {
    const TBoundaryLine found = ReadBody();
    if (found == TBoundaryLine::kParent) Close();
    if (found == TBoundaryLine::kNone || streamer_.IsEof()) break;
    // The closing boundary of a part ends that part too, and so on upwards.
    if (found == TBoundaryLine::kParent) {
      while (!open_.empty() && IsBoundary(streamer_.LastLine(), open_.back().boundary, "--")) {
        open_.pop_back();
      }
    }
    if (!open_.empty()) OpenChild();
  }
  if (!open_.empty()) Close();
}

void TMailParser::Open(TMailPart& part) {
  part.header_.LoadFromTextStreamer(streamer_, shareText_);
  TOpenPart& open = open_.emplace_back();
  open.part = &part;
  part.listing_ = part.Classify(&open.boundary);
}

void TMailParser::OpenChild() { Open(open_.back().part->Append()); }

// The innermost part ends; one that holds nothing was none.
void TMailParser::Close() {
  TMailPart& part = *open_.back().part;
  open_.pop_back();
  if (open_.empty() || part.header_.GetCount() > 0) return;
  if (part.text_.empty() && part.bodyStart_ == part.bodyEnd_) open_.back().part->parts_.pop_back();
}

std::string_view TMailParser::ParentBoundary() const {
  return open_.size() > 1 ? std::string_view(open_[open_.size() - 2].boundary) : outerBoundary_;
}

TMailParser::TBoundaryLine TMailParser::Recognise(std::string_view line) const {
  const std::string_view parent = ParentBoundary();
  if (IsBoundary(line, parent, "") || IsBoundary(line, parent, "--")) return TBoundaryLine::kParent;
  return IsBoundary(line, open_.back().boundary, "") ? TBoundaryLine::kOwn : TBoundaryLine::kNone;
}

TMailParser::TBoundaryLine TMailParser::ReadBody() {
  std::string collected;
  std::string* const collect = keepBodies_ && !streamer_.IsInMemory() ? &collected : nullptr;
  const uint64_t start = streamer_.GetPosition();
  uint64_t end = start;
  TBoundaryLine found = TBoundaryLine::kNone;
  while (found == TBoundaryLine::kNone && streamer_.ReadToDashes(collect)) {
    end = streamer_.LineStart();
    found = Recognise(streamer_.LastLine());
    if (found == TBoundaryLine::kNone && collect) {
      collect->append(streamer_.LastLine()).append("\r\n");
    }
  }
  if (found == TBoundaryLine::kNone) end = streamer_.GetPosition();
  KeepBody(*open_.back().part, start, end, collected);
  return found;
}

void TMailParser::KeepBody(TMailPart& part, uint64_t start, uint64_t end,
                           std::string_view collected) {
  if (!keepBodies_) {
    part.body_ = TMailPart::TBodyState::kDeferred;
    part.bodyStart_ = start;
    part.bodyEnd_ = end;
    return;
  }
  if (streamer_.IsInMemory()) {
    part.UseText(streamer_.Block(), streamer_.Content(start, end));
    part.isFromFile_ = part.body_ == TMailPart::TBodyState::kText;
    part.bodyStart_ = start;
    part.bodyEnd_ = end;
    return;
  }
  TTextBlock block(collected.size());
  if (!collected.empty()) std::memcpy(block.Data(), collected.data(), collected.size());
  part.UseText(block, block.View());
}

void TMailPart::LoadFromTextStreamer(TTextStreamer& streamer) {
  const bool listed = mail_ && !mail_->loading_;
  if (listed) mail_->lists_.ForgetChildren(*this);
  if (mail_) mail_->readBack_ = nullptr;
  DestroyAll(std::exchange(parts_, {}));
  DropBody();
  bodyStart_ = bodyEnd_ = 0;
  bodyHash_ = 0;
  TMailParser(*this, streamer).Run();
  modified_ = false;  // nothing below was ever marked
  MarkAbove();
  if (listed) NotifyReordered();
}

}  // namespace quarda
