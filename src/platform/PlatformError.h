// Failures of the operating system, with its own code and text.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace quarda::platform {

/// A call of the operating system failed. `what()` is the system's own text for the code, followed
/// by the name of the object the call was about.
class EPlatformError : public std::runtime_error {
 public:
  EPlatformError(uint32_t code, std::string_view object);
  /// The system's error code (errno on POSIX, GetLastError on Windows).
  uint32_t Code() const noexcept { return code_; }

 private:
  uint32_t code_;
};

/// The code of the last call that failed in this process; 0 when the last one reported none.
uint32_t LastErrorCode() noexcept;

/// The system's text for a code, without a line end.
std::string ErrorText(uint32_t code);

}  // namespace quarda::platform
