// The one exported entry of the engine library.
#include <Console.h>
#include <Program.h>

#include <cstdint>

#include "Application.h"
#include "Arguments.h"
#include "ResidentEngine.h"

/// Scans the file that the process command line names and returns the verdict as the exit code for
/// the host: 1 for a virus or blocked mail, 0 otherwise. With the switch "daemon" it serves as the
/// resident engine instead, and returns 0 when that ends. Errors of its start reach the host.
extern "C" [[gnu::visibility("default")]] int32_t Run() {
  const quarda::platform::TConsoleHandles console;
  if (const auto arguments = quarda::platform::ProgramArguments();
      quarda::HasSwitch(arguments, quarda::kResidentSwitch, true)) {
    quarda::RunResidentEngine(quarda::HasSwitch(arguments, "quit", true), {});
    return 0;
  }
  return quarda::RunCommandLine({});
}
