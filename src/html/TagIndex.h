// Where the closing tags are, so that nobody has to walk there.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "EditableText.h"
#include "PrefixSums.h"
#include "TagScan.h"

namespace quarda {

/// The answer of the index: the closing tag, or where a search that finds none ends.
struct TClosingTag {
  bool found = false;
  size_t start = 0;
  size_t end = 0;
};

/// Knows the tags of a text from some offset on and follows the edits of the text. An answer is the
/// one that a walk from tag to tag would give; where edits made it uncertain, there is no answer
/// and the index has to be built again.
class TTagIndex {
 public:
  TTagIndex() = default;
  TTagIndex(TTagIndex&&) = default;  // a copy would look into the original's names
  TTagIndex& operator=(TTagIndex&&) = default;

  /// Reads the tags from the offset on, which must not lie inside of one. `noMark` as in TTagScan.
  void Build(const TEditableText& text, size_t from, size_t& noMark);

  /// The closing tag of an element of that upper-case name whose content starts at the offset.
  std::optional<TClosingTag> FindClosing(size_t from, std::string_view name);

  /// Follows an edit that put `text` in the place of `from` up to `to`. `madeMark` tells that a
  /// "?>" came into being there.
  void Edit(size_t from, size_t to, std::string_view text, bool madeMark);

 private:
  static constexpr uint32_t kNone = UINT32_MAX;

  /// A tag and the plain text before it; also what replaced a tag, with any tags in it (`name` is
  /// kNone then). A deleted tag has no size.
  struct TBlock {
    size_t gap = 0;
    size_t size = 0;
    uint32_t name = kNone;
    size_t lastTagEnd = 0;  // where the last tag in what replaced it ends
  };
  /// A tag that opens or closes elements of one name.
  struct TOccurrence {
    uint32_t block;
    bool closes;
    uint32_t partner = kNone;  // an occurrence
    uint32_t outer = kNone;    // the occurrence that closes the element around this place
  };
  struct TName {
    std::vector<uint32_t> blocks;  // the tags of this very name
    bool isPaired = false;
    std::vector<TOccurrence> occurrences;
    uint32_t exactBehind = 0;  // edits made answers uncertain in front of the blocks behind it
  };
  struct TPlace {
    uint32_t block;
    size_t offset;
  };
  /// A text that was put in, as the scanner sees it.
  struct TInserted {
    bool isClosed = true;  // no tag goes on behind it
    size_t lastTagEnd = 0;
    std::vector<std::string> names;
  };

  size_t StartOf(uint32_t block) const noexcept {
    return start_ + sums_.Sum(block) + blocks_[block].gap;
  }
  uint32_t LastBlock() const noexcept { return static_cast<uint32_t>(blocks_.size() - 1); }
  /// The block of a place at or behind the start, and how far behind the block's begin it lies.
  TPlace Find(size_t at) noexcept;
  bool IsInsideTag(const TPlace& place) const noexcept {
    return place.offset > blocks_[place.block].gap;
  }
  TName& NameOf(std::string_view name) { return names_[NumberOf(name)]; }
  uint32_t NumberOf(std::string_view name);

  void AddTag(const TEditableText& text, const TTagSpan& tag, size_t gap);
  std::vector<TOccurrence> Merge(std::string_view name) const;
  void Pair(TName& name, std::string_view text);
  size_t EndOfSearch(uint32_t block, size_t from) noexcept;

  static TInserted Scan(std::string_view text);
  void Resize(uint32_t block, size_t gap, size_t size) noexcept;
  void Forget(uint32_t block);
  void Doubt(std::string_view name, uint32_t block);
  void Distrust(uint32_t block) noexcept { cover_ = std::max(cover_, block); }
  void EditCovered(size_t from, size_t to, std::string_view text);
  void EditTags(const TPlace& from, const TPlace& to, size_t inserted);
  uint32_t Remove(const TPlace& from, const TPlace& to);
  void Put(uint32_t place, uint32_t before, std::string_view text, const TInserted& inserted);

  bool isBuilt_ = false;
  size_t start_ = 0;    // where block 0 begins
  uint32_t cover_ = 0;  // what lies in front of the blocks behind it is not known
  bool endsCutOff_ = false;
  uint32_t lastLoose_ = kNone;  // the last tag that a "?>" behind it would change
  std::vector<TBlock> blocks_;  // the last one stands for the text behind the last tag
  TPrefixSums sums_;
  // The block of the last look-up and the size of all before it: most look-ups go on from there.
  uint32_t hintBlock_ = 0;
  size_t hintSum_ = 0;
  std::map<std::string, uint32_t, std::less<>> numbers_;
  std::vector<TName> names_;
  std::vector<std::string_view> texts_;  // of the names, in the map
  uint32_t lastTag_ = 0;                 // no block behind it holds a tag
};

}  // namespace quarda
