// Dates and times as the engine's files and logs write them.
#pragma once

#include <Clock.h>

#include <string>

namespace quarda {

/// "yyyy-mm-dd"
std::string DateText(const platform::TLocalTime& time);
/// "hh:mm:ss", 24-hour clock
std::string TimeText(const platform::TLocalTime& time);
/// "hh:mm"
std::string ShortTimeText(const platform::TLocalTime& time);

}  // namespace quarda
