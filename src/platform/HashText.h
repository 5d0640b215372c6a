// A short text that stands for a long one.
#pragma once

#include <string>
#include <string_view>

namespace quarda::platform {

/// 16 digits that stand for the text where the text itself may be too long (FNV-1a).
std::string HashText(std::string_view text);

}  // namespace quarda::platform
