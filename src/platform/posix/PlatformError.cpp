#include "PlatformError.h"

#include <cerrno>
#include <cstring>

namespace quarda::platform {

EPlatformError::EPlatformError(uint32_t code, std::string_view object)
    : std::runtime_error(ErrorText(code) + ": " + std::string(object)), code_(code) {}

uint32_t LastErrorCode() noexcept { return static_cast<uint32_t>(errno); }

std::string ErrorText(uint32_t code) { return std::strerror(static_cast<int>(code)); }

}  // namespace quarda::platform
