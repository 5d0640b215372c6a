// Reading a part tree from lines.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "MailPart.h"

namespace quarda {

class TTextStreamer;

/// Reads one part and everything below it.
class TMailParser {
 public:
  TMailParser(TMailPart& root, TTextStreamer& streamer);
  void Run();

 private:
  // A part whose end was not found yet. Its children end at its boundary.
  struct TOpenPart {
    TMailPart* part = nullptr;
    std::string boundary;
  };
  enum class TBoundaryLine { kNone, kOwn, kParent };

  void Open(TMailPart& part);
  void OpenChild();
  void Close();
  TBoundaryLine ReadBody();
  void KeepBody(TMailPart& part, uint64_t start, uint64_t end, std::string_view collected);
  TBoundaryLine Recognise(std::string_view line) const;
  std::string_view ParentBoundary() const;

  TTextStreamer& streamer_;
  const bool keepBodies_;
  const bool shareText_;
  const std::string outerBoundary_;  // of the root's parent
  std::vector<TOpenPart> open_;      // the root first, the innermost part last
};

}  // namespace quarda
