#include "CurrentApp.h"

#include <utility>

namespace quarda {
namespace {

IQuardaApp*& Slot() {
  // A plain pointer, so that nothing runs when the library is unloaded without a request.
  static IQuardaApp* slot = nullptr;
  return slot;
}

}  // namespace

TRef<IQuardaApp> GetQuardaApp() { return TRef<IQuardaApp>(Slot()); }

void SetQuardaApp(TRef<IQuardaApp> app) {
  if (app) app->AddRef();
  IQuardaApp* const old = std::exchange(Slot(), app.Get());
  if (old) old->Release();
}

}  // namespace quarda
