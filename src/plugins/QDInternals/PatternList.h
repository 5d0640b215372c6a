// Lists of wildcard patterns, made ready once for many comparisons.
#pragma once

#include <QDIntf.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarda {

/// The lines of a list, copied over the plug-in boundary once; none for null.
std::vector<std::string> LinesOf(IStringList* list);

/// From which end texts and patterns are compared. A "*" takes as little as it can, so the end that
/// must fit exactly is the one to read from.
enum class TReadFrom { kStart, kEnd };

/// Wildcard patterns, each for a whole text, without regard to letter case. Letter case is folded
/// when a pattern is added, so a comparison is one walk over text and pattern.
class TPatternList {
 public:
  explicit TPatternList(TReadFrom end = TReadFrom::kStart) : end_(end) {}

  void Add(std::string pattern);
  void AddLines(IStringList* list);

  size_t Count() const noexcept { return patterns_.size(); }
  /// As it was added.
  const std::string& Pattern(size_t index) const { return patterns_[index].written; }
  /// The index of the first pattern that matches.
  std::optional<size_t> FirstMatch(std::string_view text) const;

 private:
  struct TPattern {
    std::string written;
    std::string folded;
  };

  std::string Folded(std::string_view text) const;

  const TReadFrom end_;
  std::vector<TPattern> patterns_;
};

}  // namespace quarda
