#include "ExitCodeProgram.h"

#include <PlatformError.h>
#include <Utils.h>

#include <cstdint>

#include "CommandLauncher.h"
#include "CommandMacros.h"
#include "Messages.h"

namespace quarda {
namespace {

constexpr std::string_view kExitCode = "%s: ExitCode: %d";
constexpr std::string_view kChangeFolder = "$chdir$";

std::string TitleAndCode(std::string_view message, std::string_view title, int32_t exitCode) {
  const size_t code = message.find("%d");
  std::string text = FillIn(message.substr(0, code), {title});
  return text.append(std::to_string(exitCode)).append(message.substr(code + 2));
}

/// Whether the exit code stands for a finding. With a list that cannot be read, only 0 does not.
bool IsFinding(int32_t exitCode, std::string_view exitCodes) {
  if (exitCodes.empty()) return exitCode != 0;
  try {
    return IsInNumberList(exitCode, exitCodes);
  } catch (const ENumberListError&) {
    return exitCode != 0;
  }
}

void ReportNotStarted(IQuardaInstance& scan, IPlugin* plugin, std::string_view command,
                      uint32_t error, std::string_view reason) {
  const std::string text = platform::ErrorText(error);
  scan.LogError(plugin, Concat({text, " [", command, "]"}));
  if (!reason.empty()) scan.SetGlobalData(kVirusReason, FillIn(reason, {text, command}));
}

bool Judge(IQuardaInstance& scan, IPlugin* plugin, const TExitCodeProgram& program,
           const TExitCodeMessages& messages, const TExecution& execution) {
  const int32_t exitCode = static_cast<int32_t>(execution.exitCode);
  const bool clean = !execution.crashed && !IsFinding(exitCode, program.exitCodes);
  if (clean) {
    scan.LogOK(plugin, FillIn(messages.clean, {program.title}));
  } else {
    const std::string_view message = execution.crashed ? messages.crashed : messages.found;
    (scan.*messages.report)(plugin, TitleAndCode(message, program.title, exitCode));
  }
  scan.LogDebug(plugin, TitleAndCode(kExitCode, program.title, exitCode));
  return clean;
}

}  // namespace

bool RunExitCodeProgram(IQuardaInstance& scan, IPlugin* plugin, const TExitCodeProgram& program,
                        const TExitCodeMessages& messages) {
  if (program.command.empty()) return true;
  std::string folder;
  if (HasFlag(program.command, kChangeFolder)) {
    folder = ExtractFileDir(scan.GetArguments()->GetFilename());
  }
  const std::string command = RemoveFlag(program.command, kChangeFolder);
  scan.LogDebug(plugin, Concat({program.title, ": ", CmdMacrosToCmd(command)}));
  const TExecution execution =
      ExecuteProcess(command, scan.GetConfig()->GetMaxExecWaitTime(), false, folder);
  if (execution.started) return Judge(scan, plugin, program, messages, execution);
  ReportNotStarted(scan, plugin, command, execution.error, messages.notStartedReason);
  return false;
}

}  // namespace quarda
