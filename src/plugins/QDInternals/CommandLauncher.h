// Starting configured programs: hooks and actions, and scanners and filters that judge by their
// exit code.
#pragma once

#include <QDIntf.h>

#include <cstdint>
#include <string_view>

namespace quarda {

/// What `StartApplication` returns for a program that it did not start or did not wait for.
inline constexpr uint32_t kNoExitCode = 0xFFFFFFFF;

/// Runs a command of the hooks file, or another one that the user configured, for a scan and
/// returns its exit code. docs/scanners.md tells its macros and flags. It waits as long as the
/// settings allow; a program that takes longer goes on running, and the result is the still-active
/// code 259. A scan without a mail runs nothing and gives 0. A program that cannot be started is
/// logged; errors in preparing the start are raised.
uint32_t StartApplication(IQuardaInstance& scan, IPlugin* plugin, std::string_view command);

/// How a program ended that was run for its exit code.
struct TExecution {
  bool started = false;
  uint32_t error = 0;  ///< when it could not be started: the system's code
  uint32_t exitCode = 0;
  bool crashed = false;  ///< it died by itself, so its exit code is no verdict
};

/// Runs a configured scanner or filter in the folder (empty: the engine's own), with the macros of
/// the scanned file put in. One that runs longer than the limit (0 or less: none) is ended, with
/// everything it started, and has the exit code 0; so has every program whose command holds the
/// flag "$noexit$", but one that crashed did so with that flag too.
TExecution ExecuteProcess(std::string_view command, int32_t waitSeconds, bool show,
                          std::string_view folder);

/// Logs the system's text for the code of a failed start; nothing for 0.
void LogLastError(IQuardaInstance& scan, IPlugin* plugin, uint32_t code);

}  // namespace quarda
