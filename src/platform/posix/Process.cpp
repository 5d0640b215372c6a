// Programs are started by posix_spawn, which reports a failed execution reliably and does not copy
// the page tables of the engine. Waiting sleeps on a process descriptor, so a program that ends
// after 5 ms costs 5 ms.
#include "Process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <thread>

#include "FileCalls.h"
#include "Files.h"
#include "Paths.h"
#include "PlatformError.h"
#include "Program.h"

extern char** environ;

namespace quarda::platform {

using namespace posix;
using std::chrono::milliseconds;

namespace {

/// Raises for one of the set-up calls, which give their error as the result.
void Check(int error, std::string_view program) {
  if (error != 0) throw EPlatformError(static_cast<uint32_t>(error), program);
}

bool IsAbsoluteWindowsPath(std::string_view text) {
  return text.size() >= 3 && text[1] == ':' && (text[2] == '\\' || text[2] == '/') &&
         ((text[0] >= 'A' && text[0] <= 'Z') || (text[0] >= 'a' && text[0] <= 'z'));
}

/// The argument as a program of this system needs it.
std::string NativeArgument(const std::string& argument) {
  if (IsAbsoluteWindowsPath(argument)) return NativePath(argument);
  const size_t equals = argument.find('=');
  if (equals == std::string::npos) return argument;
  const std::string_view value = std::string_view(argument).substr(equals + 1);
  if (!IsAbsoluteWindowsPath(value)) return argument;
  return argument.substr(0, equals + 1) + NativePath(value);
}

bool IsProgramFile(const std::string& native) {
  struct stat info;
  return StatPath(native, info) == 0 && S_ISREG(info.st_mode) &&
         ::access(native.c_str(), X_OK) == 0;
}

/// A bare name: first in the engine's base folder, then on the search path. Relative folders of the
/// search path do not count: the program may start in the folder of a mail, which may hold
/// anything.
std::string FindOnSearchPath(const std::string& name) {
  const std::string ours = NativePath(ProgramFolder() + '\\' + name);
  if (IsProgramFile(ours)) return ours;
  const char* const variable = std::getenv("PATH");
  std::string_view folders = variable ? variable : "/usr/local/bin:/usr/bin:/bin";
  while (!folders.empty()) {
    const std::string_view folder = folders.substr(0, folders.find(':'));
    folders.remove_prefix(std::min(folders.size(), folder.size() + 1));
    if (!folder.starts_with('/')) continue;
    std::string candidate = std::string(folder) + '/' + name;
    if (IsProgramFile(candidate)) return candidate;
  }
  throw EPlatformError(ENOENT, name);
}

std::string NativeProgram(const std::string& program) {
  if (program.starts_with('/')) {
    struct stat info;
    if (StatPath(program, info) == 0) return program;
  }
  const bool isPath = program.find_first_of("\\/:") != std::string::npos;
  return isPath ? NativePath(FullPath(program)) : FindOnSearchPath(program);
}

/// The set-up of a start; frees what the system keeps for it.
class TSpawnSetup {
 public:
  explicit TSpawnSetup(std::string_view program) : program_(program) {
    Check(::posix_spawnattr_init(&attributes), program_);
    const int error = ::posix_spawn_file_actions_init(&actions);
    if (error != 0) ::posix_spawnattr_destroy(&attributes);
    Check(error, program_);
  }
  TSpawnSetup(const TSpawnSetup&) = delete;
  TSpawnSetup& operator=(const TSpawnSetup&) = delete;
  ~TSpawnSetup() {
    ::posix_spawn_file_actions_destroy(&actions);
    ::posix_spawnattr_destroy(&attributes);
  }

  /// A group of its own, no signal blocked or ignored.
  void SetProcessRules() {
    sigset_t signals;
    ::sigemptyset(&signals);
    Check(::posix_spawnattr_setsigmask(&attributes, &signals), program_);
    ::sigfillset(&signals);
    Check(::posix_spawnattr_setsigdefault(&attributes, &signals), program_);
    Check(::posix_spawnattr_setpgroup(&attributes, 0), program_);
    Check(::posix_spawnattr_setflags(
              &attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF),
          program_);
  }
  /// A standard handle that is not open becomes the null device; everything else is closed.
  void SetHandles() {
    for (int handle = STDIN_FILENO; handle <= STDERR_FILENO; ++handle) {
      if (::fcntl(handle, F_GETFD) != -1) continue;
      Check(::posix_spawn_file_actions_addopen(&actions, handle, "/dev/null", O_RDWR, 0), program_);
    }
    Check(::posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1), program_);
  }
  void SetFolder(std::string_view folder) {
    if (folder.empty()) return;
    Check(::posix_spawn_file_actions_addchdir_np(&actions, NativePath(folder).c_str()), program_);
  }

  posix_spawnattr_t attributes;
  posix_spawn_file_actions_t actions;

 private:
  std::string_view program_;
};

/// Has the system keep how children end. It forgets that while SIGCHLD is ignored, and this process
/// may have inherited that from the server that started it.
class TKeepsChildrensEnds {
 public:
  TKeepsChildrensEnds() noexcept {
    ::sigaction(SIGCHLD, nullptr, &before_);
    forgot_ = before_.sa_handler == SIG_IGN || (before_.sa_flags & SA_NOCLDWAIT) != 0;
    struct sigaction kept {};
    kept.sa_handler = SIG_DFL;
    if (forgot_) ::sigaction(SIGCHLD, &kept, nullptr);
  }
  TKeepsChildrensEnds(const TKeepsChildrensEnds&) = delete;
  TKeepsChildrensEnds& operator=(const TKeepsChildrensEnds&) = delete;
  ~TKeepsChildrensEnds() {
    if (forgot_) ::sigaction(SIGCHLD, &before_, nullptr);
  }

 private:
  struct sigaction before_ {};
  bool forgot_ = false;
};

/// Takes away the zombies of programs that nobody waited for (they outlived their time, or were
/// started not to be waited for); otherwise a resident engine would gather them. Ours lead a group
/// of their own; a child that a plug-in started by itself is left for the plug-in.
void ReapForgotten() noexcept {
  while (true) {
    siginfo_t ended{};
    if (::waitid(P_ALL, 0, &ended, WEXITED | WNOHANG | WNOWAIT) != 0 || ended.si_pid == 0) return;
    if (::getpgid(ended.si_pid) != ended.si_pid) return;
    ::waitpid(ended.si_pid, nullptr, WNOHANG);
  }
}

pid_t Spawn(const TProgramStart& start) {
  const std::vector<std::string> pieces = SplitProgramLine(start.commandLine);
  if (pieces.empty() || pieces[0].empty()) throw EPlatformError(ENOENT, start.commandLine);
  if (start.commandLine.find('\0') != std::string_view::npos) {
    throw EPlatformError(EINVAL, pieces[0]);
  }
  const std::string program = NativeProgram(pieces[0]);
  std::vector<std::string> arguments{program};
  std::transform(pieces.begin() + 1, pieces.end(), std::back_inserter(arguments), NativeArgument);
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);

  TSpawnSetup setup(pieces[0]);
  setup.SetProcessRules();
  setup.SetHandles();
  setup.SetFolder(start.folder);
  ReapForgotten();
  pid_t process = 0;
  Check(::posix_spawn(&process, program.c_str(), &setup.actions, &setup.attributes, pointers.data(),
                      environ),
        pieces[0]);
  return process;
}

int OpenProcessDescriptor(pid_t process) noexcept {
  return static_cast<int>(::syscall(SYS_pidfd_open, process, 0));
}

}  // namespace

struct TProcess::TState {
  explicit TState(const TProgramStart& start)
      : process(Spawn(start)), descriptor(OpenProcessDescriptor(process)) {}

  /// Whether it ended; takes its exit code then.
  bool Poll();
  bool SleepUntil(std::optional<std::chrono::steady_clock::time_point> end);

  const TKeepsChildrensEnds keepsEnds;
  const pid_t process;
  TDescriptor descriptor;  // none on systems without process descriptors
  std::optional<uint32_t> exitCode;
  bool crashed = false;
};

bool TProcess::TState::Poll() {
  if (exitCode) return true;
  int status = 0;
  pid_t got = ::waitpid(process, &status, WNOHANG);
  while (got == -1 && errno == EINTR) got = ::waitpid(process, &status, WNOHANG);
  if (got == 0) return false;
  if (got != process) {
    exitCode = kStillActive;  // somebody else took its end
    crashed = true;           // never a clean result
  } else {
    crashed = WIFSIGNALED(status);
    exitCode = static_cast<uint32_t>(crashed ? WTERMSIG(status) : WEXITSTATUS(status));
  }
  return true;
}

/// Sleeps until it ends or the time is over; true when it ended.
bool TProcess::TState::SleepUntil(std::optional<std::chrono::steady_clock::time_point> end) {
  using namespace std::chrono;
  constexpr milliseconds kLongestSleep{INT_MAX};
  constexpr milliseconds kLookAgain{
      5};  // without a process descriptor there is nothing to sleep on
  while (!Poll()) {
    milliseconds left = kLongestSleep;
    if (end) left = std::min(left, ceil<milliseconds>(*end - steady_clock::now()));
    if (left <= milliseconds::zero()) return false;
    if (descriptor) {
      pollfd wanted{descriptor.Get(), POLLIN, 0};
      ::poll(&wanted, 1, static_cast<int>(left.count()));
    } else {
      std::this_thread::sleep_for(std::min(left, kLookAgain));
    }
  }
  return true;
}

TProcess::TProcess(const TProgramStart& start) : state_(std::make_unique<TState>(start)) {}

TProcess::~TProcess() = default;

bool TProcess::Wait(std::optional<milliseconds> limit) {
  if (!limit) return state_->SleepUntil(std::nullopt);
  return state_->SleepUntil(std::chrono::steady_clock::now() + *limit);
}

void TProcess::Terminate(uint32_t exitCode) {
  constexpr std::chrono::seconds kLongestDeath{10};  // a program stuck in the kernel is left to it
  if (state_->Poll()) return;
  ::kill(-state_->process, SIGKILL);
  ::kill(state_->process, SIGKILL);  // it may have moved to another group
  const bool ended = state_->SleepUntil(std::chrono::steady_clock::now() + kLongestDeath);
  if (ended && !(state_->crashed && state_->exitCode == SIGKILL)) return;  // it was faster
  state_->exitCode = exitCode;
  state_->crashed = false;
}

uint32_t TProcess::ExitCode() { return state_->Poll() ? *state_->exitCode : kStillActive; }

bool TProcess::Crashed() { return state_->Poll() && state_->crashed; }

bool StartsDosProgramsThroughPif() noexcept { return false; }

}  // namespace quarda::platform
