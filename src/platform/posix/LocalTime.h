// Times of the system as local times.
#pragma once

#include <ctime>
#include <optional>

#include "Clock.h"

namespace quarda::platform::posix {

TLocalTime ToLocalTime(const timespec& time);
/// The moment of a local time; nothing when there is no such date.
std::optional<timespec> FromLocalTime(const TLocalTime& time);

}  // namespace quarda::platform::posix
