// The engine that stays: one process serves the scans of many mails.
#pragma once

#include <MessageWindow.h>
#include <SharedEngineRecord.h>

#include <cstdint>

#include "Environment.h"

namespace quarda {

/// Answers the messages of the engine's window. The record must outlive it.
class TEngineWindow {
 public:
  TEngineWindow(SharedEngineRecord& record, const TEngineEnvironment& environment)
      : record_(record), environment_(environment) {}

  intptr_t Handle(platform::TMessageWindow& window, uint32_t message);

  /// The answer to a request: the exit code of a scan, or `kRequestRefused`. `wait` is the longest
  /// time in milliseconds to wait for whoever has the mutex.
  int32_t ServeRequest(uint32_t wait = kRequestWaitMilliseconds);
  /// Whether nobody asked for longer than the record allows.
  bool IsIdle() const;

 private:
  SharedEngineRecord& record_;
  const TEngineEnvironment& environment_;
};

/// Serves requests until it is told to quit or nobody asks any more. When an engine serves already
/// nothing is done but, with `quit`, to tell that one to end.
void RunResidentEngine(bool quit, const TEngineEnvironment& environment);

}  // namespace quarda
