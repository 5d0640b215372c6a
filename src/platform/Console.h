// The console: the standard handles of the process and the beep.
#pragma once

#include <cstdint>

namespace quarda::platform {

/// Points standard output and error at the console device and takes standard input away, for the
/// life of the process. The console is closed again by the destructor; when it could not be opened
/// the handles are invalid and children get the null device.
class TConsoleHandles {
 public:
  TConsoleHandles() noexcept;
  TConsoleHandles(const TConsoleHandles&) = delete;
  TConsoleHandles& operator=(const TConsoleHandles&) = delete;
  ~TConsoleHandles();

 private:
  intptr_t console_;
};

/// Sounds the simple beep of the system; silent where there is nothing to sound it.
void Beep() noexcept;

}  // namespace quarda::platform
