// The one exported entry of the engine library.
#include <Console.h>

#include <cstdint>

#include "Application.h"

/// Scans the file that the process command line names. Returns the verdict as the exit code for the
/// host: 1 for a virus or blocked mail, 0 otherwise.
extern "C" [[gnu::visibility("default")]] int32_t Run() {
  const quarda::platform::TConsoleHandles console;
  return quarda::RunCommandLine({});
}
