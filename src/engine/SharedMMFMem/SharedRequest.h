// A request as it lies in the field of the record: the command line, and behind its NUL, when the
// one who asks wants the engine to scan as he would himself, the circumstances that this takes and
// his current folder. Whoever writes the line alone gets a scan of it, whatever the engine finds.
#pragma once

#include <string>
#include <string_view>

#include "SharedEngineRecord.h"

namespace quarda {

struct TSharedRequest {
  std::string line;
  std::string circumstances;  ///< 16 digits; empty when nothing is known about them
  std::string folder;

  bool operator==(const TSharedRequest&) const = default;
};

/// Whether the field has the room for it.
bool FitsRequest(const TSharedRequest& request) noexcept;
/// Fills the whole field; the request must fit.
void WriteRequest(SharedEngineRecord& record, const TSharedRequest& request);
TSharedRequest ReadRequest(const SharedEngineRecord& record);

/// Notes that the circumstances of the request in the field are those of the engine. They stay
/// there to be compared again: those who gave up waiting may have left a message behind.
void AcceptRequest(SharedEngineRecord& record);
/// Whether the field holds this request, and an engine has accepted it.
bool IsAcceptedRequest(const SharedEngineRecord& record, const TSharedRequest& request);

}  // namespace quarda
