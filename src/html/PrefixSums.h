// Sums over a row of sizes whose entries change: a binary indexed tree.
#pragma once

#include <bit>
#include <cstddef>
#include <vector>

namespace quarda {

/// An entry, and how far behind its begin a place lies.
struct TSumPlace {
  size_t entry;
  size_t offset;
};

class TPrefixSums {
 public:
  void Assign(const std::vector<size_t>& sizes) {
    tree_.assign(sizes.size() + 1, 0);
    for (size_t i = 1; i < tree_.size(); ++i) {
      tree_[i] += sizes[i - 1];
      const size_t parent = i + (i & (~i + 1));
      if (parent < tree_.size()) tree_[parent] += tree_[i];
    }
  }

  /// Changes one size; a difference below 0 wraps around and back.
  void Add(size_t entry, size_t difference) noexcept {
    for (size_t i = entry + 1; i < tree_.size(); i += i & (~i + 1)) tree_[i] += difference;
  }

  /// The sum of the first `count` sizes.
  size_t Sum(size_t count) const noexcept {
    size_t sum = 0;
    for (size_t i = count; i > 0; i &= i - 1) sum += tree_[i];
    return sum;
  }

  /// Where the place lies: in an entry (never one of size 0) or behind the last one.
  TSumPlace Find(size_t place) const noexcept {
    size_t at = 0;
    for (size_t step = std::bit_floor(tree_.size()); step > 0; step /= 2) {
      if (at + step < tree_.size() && tree_[at + step] <= place) {
        at += step;
        place -= tree_[at];
      }
    }
    return {at, place};
  }

 private:
  std::vector<size_t> tree_{0};
};

}  // namespace quarda
