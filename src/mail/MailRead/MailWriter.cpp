// Writing a part tree. The parts that wait for their children lie on a stack of our own.
#include "LineScan.h"
#include "MailPart.h"
#include "TextStreamer.h"

namespace quarda {
namespace {

// A part whose header and body are written.
struct TOpenPart {
  TMailPart* part;
  std::string boundary;
  size_t next = 0;  // child to be written
};

}  // namespace

void TMailPart::SaveOwn(TTextStreamer& streamer) {
  header_.SaveToTextStreamer(streamer);
  LoadBody();
  for (std::string_view rest = text_; !rest.empty();) streamer.WriteLn(TakeLine(rest));
  for (size_t i = 0; lines_ && i < lines_->Count(); ++i) streamer.WriteLn((*lines_)[i]);
  if (parts_.empty()) DropStaleBoundary();
}

void TMailPart::SaveToTextStreamer(TTextStreamer& streamer) {
  std::vector<TOpenPart> open;
  const auto start = [&](TMailPart& part) {
    part.SaveOwn(streamer);
    open.push_back({&part, part.GetBoundary()});
  };
  start(*this);
  while (!open.empty()) {
    TOpenPart& innermost = open.back();
    if (innermost.boundary.empty()) {
      open.pop_back();
    } else if (innermost.next < innermost.part->GetCount()) {
      streamer.Write("--");
      streamer.WriteLn(innermost.boundary);
      start(innermost.part->GetParts(innermost.next++));
    } else {
      streamer.Write("--");
      streamer.Write(innermost.boundary);
      streamer.Write("--\r\n\r\n");
      open.pop_back();
    }
  }
  SetModified(false);
}

}  // namespace quarda
