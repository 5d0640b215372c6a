// The text is one chunk until its first edit, so that reading it runs over contiguous memory. An
// edit splits a large chunk into small ones and then moves bytes within one of them only; a tree of
// sums finds the chunk of a position.
#include "EditableText.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace quarda {
namespace {

constexpr size_t kChunk = 1024;
constexpr size_t kLargestChunk = 4 * kChunk;  // what one edit may have to move

}  // namespace

TEditableText::TEditableText(std::string text) : size_(text.size()) {
  chunks_.push_back(std::move(text));
  CountChunks();
}

void TEditableText::CountChunks() {
  std::vector<size_t> sizes;
  sizes.reserve(chunks_.size());
  for (const std::string& chunk : chunks_) sizes.push_back(chunk.size());
  starts_.Assign(sizes);
  hintChunk_ = 0;
  hintStart_ = 0;
}

void TEditableText::MoveHint(size_t at) const noexcept {
  const TSumPlace found = starts_.Find(at);
  hintChunk_ = found.entry;
  hintStart_ = at - found.offset;
  if (hintChunk_ < chunks_.size()) return;
  --hintChunk_;  // the end of the text lies in the last chunk
  hintStart_ -= chunks_[hintChunk_].size();
}

std::string TEditableText::Slice(size_t from, size_t to) const {
  std::string slice;
  to = std::min(to, size_);
  if (from >= to) return slice;
  slice.reserve(to - from);
  while (from < to) {
    const std::string_view piece = ViewFrom(from).substr(0, to - from);
    slice.append(piece);
    from += piece.size();
  }
  return slice;
}

void TEditableText::Split(size_t chunk) {
  const std::string large = std::move(chunks_[chunk]);
  std::vector<std::string> pieces;
  pieces.reserve(large.size() / kChunk + 1);
  for (size_t at = 0; at < large.size(); at += kChunk) pieces.push_back(large.substr(at, kChunk));
  const auto place = chunks_.begin() + static_cast<ptrdiff_t>(chunk);
  *place = std::move(pieces.front());
  chunks_.insert(place + 1, std::make_move_iterator(pieces.begin() + 1),
                 std::make_move_iterator(pieces.end()));
  CountChunks();
}

TEditableText::TPlace TEditableText::LocateForEdit(size_t at) {
  const TPlace place = Locate(at);
  if (chunks_[place.chunk].size() <= kLargestChunk) return place;
  Split(place.chunk);
  return Locate(at);
}

void TEditableText::Erase(size_t at, size_t count) {
  while (count > 0) {
    const TPlace place = LocateForEdit(at);
    std::string& chunk = chunks_[place.chunk];
    const size_t erased = std::min(count, chunk.size() - place.offset);
    chunk.erase(place.offset, erased);
    starts_.Add(place.chunk, 0 - erased);
    size_ -= erased;
    count -= erased;
  }
}

void TEditableText::Replace(size_t from, size_t to, std::string_view text) {
  Erase(from, to - from);
  if (text.empty()) return;
  const TPlace place = LocateForEdit(from);
  chunks_[place.chunk].insert(place.offset, text);
  starts_.Add(place.chunk, text.size());
  size_ += text.size();
}

}  // namespace quarda
