// The engine library, as the programs of this folder load it.
#pragma once

#include <cstdint>

namespace quarda {

/// Loads the engine from the program's own folder and runs it on the command line of this process.
/// Returns the verdict; 0 when there is no engine, because without one no mail is blocked.
/// `program` is the name for messages on standard error.
int32_t RunEngine(const char* program) noexcept;

}  // namespace quarda
