// Starting other programs and waiting for them.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarda::platform {

/// How a program is started.
struct TProgramStart {
  /// Program and arguments in one string, split by the Windows rules (SplitProgramLine) and started
  /// directly, never through a shell. The program is a path of this system, a Windows path, or a
  /// bare name, which is looked up in the engine's base folder and then on the search path, never
  /// in the folder it starts in. A relative path is relative to the engine's current folder.
  /// Arguments that are absolute Windows paths, also after a "=" inside an argument, reach the
  /// program as paths of this system.
  std::string_view commandLine;
  /// The folder it starts in; empty for the engine's own.
  std::string_view folder;
  /// Whether a window of the program starts hidden (where programs have windows).
  bool hidden = false;
  /// Whether it ends, with all that it started, when this process ends before the TProcess is
  /// destroyed (where the system can bind programs so).
  bool bound = false;
};

/// A started program. It gets the three standard handles and nothing else, and a process group of
/// its own. The destructor does not end it.
class TProcess {
 public:
  /// What `ExitCode` gives while the program runs.
  static constexpr uint32_t kStillActive = 259;

  /// Raises EPlatformError with the system's code when the program cannot be started, also when
  /// only its last step, the execution of the program file, fails.
  explicit TProcess(const TProgramStart& start);
  TProcess(const TProcess&) = delete;
  TProcess& operator=(const TProcess&) = delete;
  ~TProcess();

  /// Sleeps until the program ends, at most `limit` (without one: for ever). True when it ended.
  bool Wait(std::optional<std::chrono::milliseconds> limit);
  /// Ends the program and everything in its process group; `exitCode` is what ExitCode gives then.
  /// A program that ended by itself, if only just before, keeps its own.
  void Terminate(uint32_t exitCode);
  /// The exit code, or kStillActive. A program that died by a signal of its own gives the number of
  /// the signal, so that a crash is never taken for a clean end.
  uint32_t ExitCode();
  /// Whether it died by a signal of its own (on Windows: by an exception that nothing handled), or
  /// somebody else in this process took its end, so that nobody knows how it was.
  bool Crashed();

 private:
  struct TState;
  std::unique_ptr<TState> state_;
};

/// Splits a command line by the usual Windows rules: blanks and tabs separate, double quotes group,
/// a backslash before a quote makes it an ordinary character (two backslashes before a quote are
/// one). In the program's own name backslashes are always ordinary.
std::vector<std::string> SplitProgramLine(std::string_view commandLine);
/// The same pieces as they are written, with their quotes and backslashes: views into the line.
std::vector<std::string_view> RawProgramLine(std::string_view commandLine);
/// The argument between quotes, escaped so that SplitProgramLine gives it back as one piece.
std::string QuoteArgument(std::string_view argument);

/// Whether DOS programs need a PIF file to be started (the Windows 95 family).
bool StartsDosProgramsThroughPif() noexcept;

}  // namespace quarda::platform
