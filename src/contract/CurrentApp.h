// The one global of the engine: the application of the request being served.
#pragma once

#include "QDIntf.h"

namespace quarda {

/// The current application, or null when there is none.
TRef<IQuardaApp> GetQuardaApp();
/// Replaces the current application; null releases it.
void SetQuardaApp(TRef<IQuardaApp> app);

/// Clears the current application when a request ends, however it ends.
class TCurrentAppGuard {
 public:
  TCurrentAppGuard() = default;
  TCurrentAppGuard(const TCurrentAppGuard&) = delete;
  TCurrentAppGuard& operator=(const TCurrentAppGuard&) = delete;
  ~TCurrentAppGuard() { SetQuardaApp(nullptr); }
};

}  // namespace quarda
