// A long text that is edited in many places.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "PrefixSums.h"

namespace quarda {

/// Behaves like one string with offsets from 0, but an edit does not move the text behind it.
class TEditableText {
 public:
  TEditableText() : TEditableText(std::string()) {}
  explicit TEditableText(std::string text);

  size_t Size() const noexcept { return size_; }
  /// A stretch of the text that starts there, empty only at the end. Valid until the next edit.
  std::string_view ViewFrom(size_t at) const noexcept {
    if (at >= size_) return {};
    const TPlace place = Locate(at);
    return std::string_view(chunks_[place.chunk]).substr(place.offset);
  }
  std::string Slice(size_t from, size_t to) const;

  /// Puts `text` in the place of the characters from `from` up to `to`.
  void Replace(size_t from, size_t to, std::string_view text);

 private:
  struct TPlace {
    size_t chunk;
    size_t offset;
  };

  TPlace Locate(size_t at) const noexcept {
    if (at - hintStart_ >= chunks_[hintChunk_].size()) MoveHint(at);  // also when it lies before
    return {hintChunk_, at - hintStart_};
  }
  void MoveHint(size_t at) const noexcept;
  /// The place of an edit, in a chunk that is small enough for it.
  TPlace LocateForEdit(size_t at);
  void Split(size_t chunk);
  void CountChunks();
  void Erase(size_t at, size_t count);

  std::vector<std::string> chunks_;
  TPrefixSums starts_;
  size_t size_;
  // The chunk of the last look-up: most look-ups go on where the last one ended.
  mutable size_t hintChunk_ = 0;
  mutable size_t hintStart_ = 0;
};

}  // namespace quarda
