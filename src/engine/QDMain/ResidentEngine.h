// The engine that stays: one process serves the scans of many mails.
#pragma once

#include <MessageWindow.h>
#include <SharedEngineRecord.h>

#include <cstdint>
#include <string>

#include "Environment.h"

namespace quarda {

struct TSharedRequest;

/// Answers the messages of the engine's window. The record must outlive it.
class TEngineWindow {
 public:
  TEngineWindow(SharedEngineRecord& record, const TEngineEnvironment& environment);

  intptr_t Handle(platform::TMessageWindow& window, uint32_t message);

  /// The answer to a request: the exit code of a scan, or `kRequestRefused`, also when a scan here
  /// would not do what one by the process that asks does. `wait` is the longest time in
  /// milliseconds to wait for whoever has the mutex.
  int32_t ServeRequest(uint32_t wait = kRequestWaitMilliseconds);
  /// Whether nobody asked for longer than the record allows.
  bool IsIdle() const;

 private:
  bool ScansAsAsked(const TSharedRequest& request) const;

  SharedEngineRecord& record_;
  const TEngineEnvironment& environment_;
  const std::string circumstances_;  // of this process
};

/// Serves requests until it is told to quit or nobody asks any more. When an engine serves already
/// nothing is done but, with `quit`, to tell that one to end.
void RunResidentEngine(bool quit, const TEngineEnvironment& environment);

}  // namespace quarda
