// The console device of the process, and the beep.
#include "Console.h"

#include "System.h"

namespace quarda::platform {
namespace {

void SetOutput(HANDLE handle) noexcept {
  ::SetStdHandle(STD_OUTPUT_HANDLE, handle);
  ::SetStdHandle(STD_ERROR_HANDLE, handle);
}

HANDLE OpenConsole() noexcept {
  return ::CreateFileA("CON", GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                       OPEN_EXISTING, 0, nullptr);
}

}  // namespace

// What starts a process gives it the null device in place of a handle that is invalid.
TConsoleHandles::TConsoleHandles() noexcept : console_(reinterpret_cast<intptr_t>(OpenConsole())) {
  SetOutput(reinterpret_cast<HANDLE>(console_));
  ::SetStdHandle(STD_INPUT_HANDLE, INVALID_HANDLE_VALUE);
}

TConsoleHandles::~TConsoleHandles() {
  const HANDLE console = reinterpret_cast<HANDLE>(console_);
  if (console == INVALID_HANDLE_VALUE) return;
  SetOutput(INVALID_HANDLE_VALUE);
  ::CloseHandle(console);
}

void Beep() noexcept {
  constexpr UINT kSimpleBeep = 0xFFFFFFFF;
  ::MessageBeep(kSimpleBeep);
}

}  // namespace quarda::platform
