#include "PlatformError.h"

#include <array>
#include <cerrno>
#include <cstring>

namespace quarda::platform {

EPlatformError::EPlatformError(uint32_t code, std::string_view object)
    : std::runtime_error(ErrorText(code).append(": ").append(object)), code_(code) {}

uint32_t LastErrorCode() noexcept { return static_cast<uint32_t>(errno); }

// Always the English text: the log must read the same whatever locale a plug-in sets.
std::string ErrorText(uint32_t code) {
  const char* text = ::strerrordesc_np(static_cast<int>(code));
  return text != nullptr ? text : "Unknown error " + std::to_string(code);
}

}  // namespace quarda::platform
