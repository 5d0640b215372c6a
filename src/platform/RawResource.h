// Raw data that the engine's library carries.
#pragma once

#include <string_view>

namespace quarda::platform {

/// The resource of that name, for as long as the library is loaded; empty when there is none.
std::string_view RawResource(std::string_view name) noexcept;

}  // namespace quarda::platform
