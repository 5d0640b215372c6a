// What the engine takes from outside: the place of its files and the time.
#pragma once

#include <Clock.h>
#include <Program.h>

#include <string>

namespace quarda {

struct TEngineEnvironment {
  /// The engine's base folder, without a trailing backslash.
  std::string baseFolder = platform::ProgramFolder();
  const platform::TClock* clock = &platform::SystemClock();
};

}  // namespace quarda
