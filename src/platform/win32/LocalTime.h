// Times of the system as local times.
#pragma once

#include <optional>

#include "Clock.h"
#include "System.h"

namespace quarda::platform::win32 {

/// Local time by the rule that holds now, summer or winter, as the system shows file times.
TLocalTime ToLocalTime(const FILETIME& time) noexcept;
/// The moment of a local time; nothing when there is no such date.
std::optional<FILETIME> FromLocalTime(const TLocalTime& time) noexcept;

}  // namespace quarda::platform::win32
