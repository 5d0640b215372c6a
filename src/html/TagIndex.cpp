// The text from `start_` on is a row of blocks, each a stretch without tags and the tag behind it;
// a tree of sums turns their sizes into offsets, so that an edit costs a logarithm. For one name
// the opening and closing tags are paired like brackets, once; from that pairing every place knows
// the tag that closes the element around it. An edit makes some answers uncertain. Deleting a tag
// changes the answers only in front of the element it belongs to, and a text put in only the
// answers in front of it, which is behind whoever walks forward; asked there, the index gives no
// answer.
#include "TagIndex.h"

#include <CodePage.h>
#include <Utils.h>

#include "AttrList.h"

namespace quarda {
namespace {

/// How many blocks behind the last one are tried before the tree is asked.
constexpr int kStepsToHint = 8;

}  // namespace

void TTagIndex::Build(const TEditableText& text, size_t from, size_t& noMark) {
  *this = TTagIndex();
  isBuilt_ = true;
  start_ = from;
  blocks_.emplace_back();  // of no size: what is put in at the start goes there
  TTagScan scan(text, noMark);
  size_t at = from;
  while (const TTagSpan tag = scan.Next(at)) {
    AddTag(text, tag, tag.start - at);
    at = tag.end;
  }
  lastTag_ = LastBlock();
  blocks_.push_back({.gap = text.Size() - std::min(at, text.Size())});
  std::vector<size_t> sizes;
  sizes.reserve(blocks_.size());
  for (const TBlock& block : blocks_) sizes.push_back(block.gap + block.size);
  sums_.Assign(sizes);
}

void TTagIndex::AddTag(const TEditableText& text, const TTagSpan& tag, size_t gap) {
  const size_t size = tag.end - tag.start;
  std::string_view tagText = text.ViewFrom(tag.start);
  std::string joined;
  if (tagText.size() < size) tagText = joined = text.Slice(tag.start, tag.end);
  const std::string name = platform::UpperAnsi(TagNameOf(tagText.substr(0, size)));
  const auto block = static_cast<uint32_t>(blocks_.size());
  const uint32_t number = NumberOf(name);
  names_[number].blocks.push_back(block);
  blocks_.push_back({.gap = gap, .size = size, .name = number});
  if (tag.loose) lastLoose_ = block;
  endsCutOff_ = tag.cutOff;
}

uint32_t TTagIndex::NumberOf(std::string_view name) {
  auto found = numbers_.lower_bound(name);
  if (found == numbers_.end() || found->first != name) {
    found = numbers_.emplace_hint(found, name, static_cast<uint32_t>(names_.size()));
    names_.emplace_back();
    texts_.push_back(found->first);
  }
  return found->second;
}

TTagIndex::TPlace TTagIndex::Find(size_t at) noexcept {
  const size_t place = at - start_;
  for (int step = 0; step < kStepsToHint && place >= hintSum_; ++step) {
    const TBlock& block = blocks_[hintBlock_];
    if (place - hintSum_ < block.gap + block.size) return {hintBlock_, place - hintSum_};
    if (hintBlock_ == LastBlock()) break;
    hintSum_ += block.gap + block.size;
    ++hintBlock_;
  }
  const TSumPlace found = sums_.Find(place);
  hintBlock_ = static_cast<uint32_t>(found.entry);
  hintSum_ = place - found.offset;
  if (hintBlock_ > LastBlock()) {  // the end of the text
    --hintBlock_;
    hintSum_ -= blocks_[hintBlock_].gap;
  }
  return {hintBlock_, place - hintSum_};
}

std::vector<TTagIndex::TOccurrence> TTagIndex::Merge(std::string_view name) const {
  std::vector<TOccurrence> merged;
  size_t openings = 0;
  for (const bool closes : {false, true}) {
    openings = merged.size();
    const auto found = numbers_.find(closes ? Concat({"/", name}) : std::string(name));
    if (found == numbers_.end()) continue;
    for (const uint32_t block : names_[found->second].blocks) {
      if (blocks_[block].name == found->second) merged.push_back({block, closes});
    }
  }
  std::ranges::inplace_merge(merged, merged.begin() + static_cast<ptrdiff_t>(openings), {},
                             &TOccurrence::block);
  return merged;
}

void TTagIndex::Pair(TName& name, std::string_view text) {
  std::vector<TOccurrence>& row = name.occurrences;
  row = Merge(text);
  std::vector<uint32_t> open;
  for (uint32_t i = 0; i < row.size(); ++i) {
    if (!row[i].closes) {
      open.push_back(i);
    } else if (!open.empty()) {
      row[i].partner = open.back();
      row[open.back()].partner = i;
      open.pop_back();
    }
  }
  for (auto i = static_cast<uint32_t>(row.size()); i-- > 0;) {
    const uint32_t next = row[i].closes ? i : row[i].partner;  // on the level of this place
    if (row[i].closes) {
      row[i].outer = i;
    } else if (next != kNone && next + 1 < row.size()) {
      row[i].outer = row[next + 1].outer;
    }
  }
  name.isPaired = true;
}

std::optional<TClosingTag> TTagIndex::FindClosing(size_t from, std::string_view name) {
  if (!isBuilt_ || from < start_) return std::nullopt;
  const TPlace place = Find(from);
  if (IsInsideTag(place) || place.block <= cover_) return std::nullopt;
  TName& known = NameOf(name);
  if (place.block <= known.exactBehind) return std::nullopt;
  if (!known.isPaired) Pair(known, name);
  const auto& row = known.occurrences;
  const auto first = std::ranges::lower_bound(row, place.block, {}, &TOccurrence::block);
  if (first == row.end() || first->outer == kNone) {
    const size_t end = EndOfSearch(place.block, from);
    return TClosingTag{false, end, end};
  }
  const uint32_t block = row[first->outer].block;
  if (blocks_[block].name == kNone) return std::nullopt;
  const size_t start = StartOf(block);
  return TClosingTag{true, start, start + blocks_[block].size};
}

size_t TTagIndex::EndOfSearch(uint32_t block, size_t from) noexcept {
  const auto holdsTag = [](const TBlock& each) {
    return each.name != kNone || each.lastTagEnd > 0;
  };
  while (lastTag_ > 0 && !holdsTag(blocks_[lastTag_])) --lastTag_;
  if (lastTag_ < block) return from;
  const TBlock& last = blocks_[lastTag_];
  return StartOf(lastTag_) + (last.name != kNone ? last.size : last.lastTagEnd);
}

TTagIndex::TInserted TTagIndex::Scan(std::string_view text) {
  TInserted inserted;
  const TStringSource source(text);
  size_t noMark = kNowhere;
  TTagScan scan(source, noMark);
  while (const TTagSpan tag = scan.Next(inserted.lastTagEnd)) {
    inserted.isClosed = inserted.isClosed && !tag.cutOff && !tag.loose;
    inserted.lastTagEnd = tag.end;
    inserted.names.push_back(
        platform::UpperAnsi(TagNameOf(text.substr(tag.start, tag.end - tag.start))));
  }
  return inserted;
}

void TTagIndex::Resize(uint32_t block, size_t gap, size_t size) noexcept {
  TBlock& resized = blocks_[block];
  const size_t difference = gap + size - resized.gap - resized.size;
  if (difference != 0) sums_.Add(block, difference);
  if (block < hintBlock_) hintSum_ += difference;
  resized.gap = gap;
  resized.size = size;
}

void TTagIndex::Doubt(std::string_view name, uint32_t block) {
  TName& doubted = NameOf(name);
  doubted.exactBehind = std::max(doubted.exactBehind, block);
}

void TTagIndex::Forget(uint32_t block) {
  const uint32_t number = std::exchange(blocks_[block].name, kNone);
  blocks_[block].lastTagEnd = 0;
  if (number == kNone) return;
  names_[number].exactBehind = std::max(names_[number].exactBehind, block);
  if (!texts_[number].starts_with('/')) return;
  const auto closed = numbers_.find(texts_[number].substr(1));
  if (closed == numbers_.end() || !names_[closed->second].isPaired) return;
  TName& name = names_[closed->second];
  const auto& row = name.occurrences;
  const auto found = std::ranges::lower_bound(row, block, {}, &TOccurrence::block);
  if (found == row.end() || found->block != block || found->partner == kNone) return;
  name.exactBehind = std::max(name.exactBehind, row[found->partner].block);
}

void TTagIndex::Edit(size_t from, size_t to, std::string_view text, bool madeMark) {
  if (!isBuilt_) return;
  if (from < start_) {
    if (to > start_) EditCovered(start_, to, {});
    start_ = to > start_ ? from + text.size() : start_ + text.size() - (to - from);
    return;
  }
  const uint32_t block = Find(from).block;
  const bool extendsTag = endsCutOff_ && block == LastBlock();
  if (extendsTag) Distrust(block);
  if (madeMark && lastLoose_ != kNone) Distrust(std::min(block, lastLoose_));
  EditCovered(from, to, text);
}

void TTagIndex::EditCovered(size_t from, size_t to, std::string_view text) {
  const TPlace first = Find(from);
  const TPlace last = Find(to);
  const TInserted inserted = Scan(text);
  if (IsInsideTag(first) || IsInsideTag(last) || !inserted.isClosed) {
    EditTags(first, last, text.size());
  } else {
    const uint32_t place = Remove(first, last);
    if (!text.empty()) Put(place, last.block, text, inserted);
  }
}

/// An edit that changes where tags begin and end: nothing is known up to the end of its last block.
void TTagIndex::EditTags(const TPlace& from, const TPlace& to, size_t inserted) {
  const size_t rest = blocks_[to.block].gap + blocks_[to.block].size - to.offset;
  for (uint32_t block = from.block; block <= to.block; ++block) {
    Forget(block);
    const size_t kept = block == from.block ? from.offset : 0;
    Resize(block, block == to.block ? kept + inserted + rest : kept, 0);
  }
  Distrust(to.block);
}

/// Deletes whole tags and plain text. Gives the deleted tag at that place, or kNone.
uint32_t TTagIndex::Remove(const TPlace& from, const TPlace& to) {
  if (from.block == to.block) {
    const TBlock& block = blocks_[from.block];
    Resize(from.block, block.gap - (to.offset - from.offset), block.size);
    const bool isBehindDeleted =
        from.offset == 0 && from.block > 0 && blocks_[from.block - 1].size == 0;
    return isBehindDeleted ? from.block - 1 : kNone;
  }
  for (uint32_t block = from.block; block < to.block; ++block) {
    Forget(block);
    Resize(block, block == from.block ? from.offset : 0, 0);
  }
  Resize(to.block, blocks_[to.block].gap - to.offset, blocks_[to.block].size);
  return from.block;
}

/// Puts a text in the place of a deleted tag, or else into the gap of the block behind it.
void TTagIndex::Put(uint32_t place, uint32_t before, std::string_view text,
                    const TInserted& inserted) {
  const bool isPlain = inserted.names.empty();
  if (isPlain || place == kNone) {
    Resize(before, blocks_[before].gap + text.size(), blocks_[before].size);
    if (!isPlain) Distrust(before);
    return;
  }
  Resize(place, blocks_[place].gap, text.size());
  blocks_[place].lastTagEnd = inserted.lastTagEnd;
  lastTag_ = std::max(lastTag_, place);
  for (const std::string& name : inserted.names) {
    Doubt(name, place + 1);
    if (name.starts_with('/')) Doubt(std::string_view(name).substr(1), place + 1);
  }
}

}  // namespace quarda
