// Every listed part carries a number that grows in document order. Deleting leaves the numbers of
// the others in order, and what is appended at the end of the document takes higher ones; so the
// place of a part in a list is found by binary search. Anything else numbers all parts anew.
#include "PartLists.h"

#include <algorithm>
#include <utility>

namespace quarda {
namespace {

/// Whether nothing follows the part. Below that depth the answer is no without a look, so that
/// adding to a deep nest costs no walk up all of it.
bool IsLastInDocument(const TMailPart& part) noexcept {
  constexpr int kDeepestLook = 100;
  const TMailPart* child = &part;
  for (int depth = 0; depth < kDeepestLook; ++depth) {
    const TMailPart* const parent = child->GetParent();
    if (!parent) return true;
    if (&parent->GetParts(parent->GetCount() - 1) != child) return false;
    child = parent;
  }
  return false;
}

}  // namespace

std::vector<TMailPart*>* TPartLists::ListOf(TMailPart::TListing listing) noexcept {
  switch (listing) {
    case TMailPart::TListing::kAttachment:
      return &attachments_;
    case TMailPart::TListing::kText:
      return &texts_;
    default:
      return nullptr;
  }
}

void TPartLists::NoteAdded(TMailPart& part) {
  if (rebuild_) return;  // finds it anyway
  if (IsLastInDocument(part)) {
    added_.push_back(&part);
  } else {
    rebuild_ = true;
  }
}

void TPartLists::NoteChanged(TMailPart& part) {
  if (part.order_ == 0 || part.changePending_) return;
  part.changePending_ = true;
  changed_.push_back(&part);
}

void TPartLists::Forget(TMailPart& part) {
  ForgetChildren(part);
  if (part.order_ > 0) ForgetRange(part.order_, part.order_);
}

void TPartLists::ForgetChildren(TMailPart& part) {
  if (!added_.empty()) {  // some of them may lie below the part
    added_.clear();
    rebuild_ = true;
  }
  uint64_t last = part.order_;
  std::vector<const TMailPart*> pending{&part};
  while (!pending.empty()) {
    const TMailPart& at = *pending.back();
    pending.pop_back();
    last = std::max(last, at.order_);
    for (const auto& child : at.parts_) pending.push_back(child.get());
  }
  if (last > part.order_) ForgetRange(part.order_ + 1, last);
}

void TPartLists::ForgetRange(uint64_t first, uint64_t last) {
  for (auto* const list : {&attachments_, &texts_}) {
    const auto begin = std::ranges::lower_bound(*list, first, {}, &TMailPart::order_);
    const auto end = std::ranges::upper_bound(*list, last, {}, &TMailPart::order_);
    list->erase(begin, end);
  }
  std::erase_if(changed_, [&](const TMailPart* part) {
    return part->order_ >= first && part->order_ <= last;
  });
}

void TPartLists::Clear() noexcept {
  attachments_.clear();
  texts_.clear();
  added_.clear();
  changed_.clear();
  rebuild_ = true;
}

void TPartLists::Update(TMailPart& root) {
  if (rebuild_) {
    Rebuild(root);
    return;
  }
  for (TMailPart* const part : std::exchange(changed_, {})) Relist(*part);
  for (TMailPart* const part : std::exchange(added_, {})) {
    part->listing_ = part->Classify();
    Number(*part);
  }
}

// Appends the part to the list that it belongs to.
void TPartLists::Number(TMailPart& part) {
  part.order_ = ++lastOrder_;
  part.changePending_ = false;
  if (auto* const list = ListOf(part.listing_)) list->push_back(&part);
}

void TPartLists::Relist(TMailPart& part) {
  part.changePending_ = false;
  const TMailPart::TListing listing = part.Classify();
  if (listing == part.listing_) return;
  const auto placeIn = [&](std::vector<TMailPart*>& list) {
    return std::ranges::lower_bound(list, part.order_, {}, &TMailPart::order_);
  };
  if (auto* const list = ListOf(part.listing_)) list->erase(placeIn(*list));
  part.listing_ = listing;
  if (auto* const list = ListOf(listing)) list->insert(placeIn(*list), &part);
}

void TPartLists::Rebuild(TMailPart& root) { ListAll(root, false); }

void TPartLists::ListRead(TMailPart& root) { ListAll(root, true); }

void TPartLists::ListAll(TMailPart& root, bool classified) {
  Clear();
  rebuild_ = false;
  lastOrder_ = 0;
  std::vector<TMailPart*> pending{&root};
  while (!pending.empty()) {
    TMailPart& part = *pending.back();
    pending.pop_back();
    if (!classified) part.listing_ = part.Classify();
    Number(part);
    for (size_t i = part.parts_.size(); i > 0; --i) pending.push_back(part.parts_[i - 1].get());
  }
}

}  // namespace quarda
