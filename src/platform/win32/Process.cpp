// A program starts suspended, so that it is a member of its job before it can start another one;
// ending the job ends them all.
#include "Process.h"

#include <algorithm>
#include <array>
#include <memory>

#include "CodePage.h"
#include "Files.h"
#include "Paths.h"
#include "PlatformError.h"
#include "System.h"

namespace quarda::platform {

using namespace win32;
using std::chrono::milliseconds;

namespace {

/// What the system is told to start.
struct TCommand {
  std::string program;  // full path
  std::string line;
};

std::string ProgramFile(const std::string& given) {
  const size_t start = NameStart(given);
  if (start == 0) return FindOnSearchPath(given, ".exe");
  const bool hasExtension = given.find('.', start) != std::string::npos;
  return FullPath(hasExtension || FileExists(given) ? given : given + ".exe");
}

bool IsBatchFile(std::string_view program) {
  const std::string extension =
      LowerAnsi(program.substr(program.size() - std::min<size_t>(program.size(), 4)));
  return extension == ".bat" || extension == ".cmd";
}

bool IsPlain(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
         std::string_view("#$*+-./:?@\\_").find(c) != std::string_view::npos;
}

/// An argument for the command processor such that it reaches the batch file as it is: between
/// quotes nothing but a quote, which is doubled, and a percent sign has a meaning. Behind that one
/// stands a variable of which no character is taken, so that nothing else is read as one.
std::string BatchArgument(const std::string& argument) {
  if (argument.find_first_of("\r\n") != std::string::npos) {
    throw EPlatformError(ERROR_INVALID_PARAMETER, "line break in an argument of a batch file");
  }
  if (!argument.empty() && std::ranges::all_of(argument, IsPlain)) return argument;
  std::string quoted = "\"";
  for (const char c : argument) {
    if (c == '%') {
      quoted += "%%cd:~,%";
    } else {
      quoted.append(c == '"' ? 2 : 1, c);
    }
  }
  return quoted += '"';
}

/// A batch file needs the command processor, which would read meaning into its arguments. It runs
/// nothing when the line is longer than it takes, and says so only on its output.
TCommand BatchCommand(const std::string& program, const std::vector<std::string>& pieces) {
  constexpr size_t kLongestLine = 8190;
  const std::string folder =
      TextOf([](char* text, DWORD size) { return ::GetSystemDirectoryA(text, size); });
  TCommand command{folder + "\\cmd.exe", {}};
  command.line = "\"" + command.program + "\" /e:ON /v:OFF /d /c \"\"" + program + "\"";
  for (size_t i = 1; i < pieces.size(); ++i) command.line += ' ' + BatchArgument(pieces[i]);
  command.line += '"';
  if (command.line.size() > kLongestLine) throw EPlatformError(ERROR_FILENAME_EXCED_RANGE, program);
  return command;
}

/// The arguments reach any other program as they are written.
TCommand CommandFor(std::string_view given) {
  const std::vector<std::string> pieces = SplitProgramLine(given);
  if (pieces.empty() || pieces[0].empty()) throw EPlatformError(ERROR_FILE_NOT_FOUND, given);
  if (given.find('\0') != std::string_view::npos) {
    throw EPlatformError(ERROR_INVALID_PARAMETER, pieces[0]);
  }
  const std::string program = ProgramFile(pieces[0]);
  if (program.empty()) throw EPlatformError(ERROR_FILE_NOT_FOUND, pieces[0]);
  if (IsBatchFile(program) && FileExists(program)) return BatchCommand(program, pieces);
  const std::string_view first = RawProgramLine(given).front();
  const std::string_view rest =
      given.substr(static_cast<size_t>(first.data() + first.size() - given.data()));
  return {program, ("\"" + program + "\"").append(rest)};
}

/// A handle that one program inherits: the standard one, or the null device where that is invalid.
THandle Inherited(DWORD standard) {
  const HANDLE own = ::GetStdHandle(standard);
  HANDLE copy = nullptr;
  if (own != nullptr && own != INVALID_HANDLE_VALUE &&
      ::DuplicateHandle(::GetCurrentProcess(), own, ::GetCurrentProcess(), &copy, 0, TRUE,
                        DUPLICATE_SAME_ACCESS)) {
    return THandle(copy);
  }
  SECURITY_ATTRIBUTES inherits{sizeof inherits, nullptr, TRUE};
  return THandle(::CreateFileA("NUL", GENERIC_READ | GENERIC_WRITE,
                               FILE_SHARE_READ | FILE_SHARE_WRITE, &inherits, OPEN_EXISTING, 0,
                               nullptr));
}

/// The set-up of a start: the window, and the three handles that the program gets.
class TStartSetup {
 public:
  explicit TStartSetup(bool hidden) {
    SIZE_T size = 0;
    ::InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
    memory_ = std::make_unique<char[]>(size);
    STARTUPINFOA& start = info_.StartupInfo;
    start.cb = sizeof info_;
    start.dwFlags = STARTF_USESHOWWINDOW | STARTF_USESTDHANDLES;
    start.wShowWindow = hidden ? SW_HIDE : SW_SHOWNORMAL;
    start.hStdInput = list_[0] = handles_[0].Get();
    start.hStdOutput = list_[1] = handles_[1].Get();
    start.hStdError = list_[2] = handles_[2].Get();
    const auto attributes = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(memory_.get());
    if (!::InitializeProcThreadAttributeList(attributes, 1, 0, &size)) return;
    info_.lpAttributeList = attributes;
    ::UpdateProcThreadAttribute(attributes, 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, list_.data(),
                                sizeof list_, nullptr, nullptr);
  }
  TStartSetup(const TStartSetup&) = delete;
  TStartSetup& operator=(const TStartSetup&) = delete;
  ~TStartSetup() {
    if (info_.lpAttributeList != nullptr) ::DeleteProcThreadAttributeList(info_.lpAttributeList);
  }

  STARTUPINFOA* Get() noexcept { return &info_.StartupInfo; }

 private:
  const std::array<THandle, 3> handles_ = {
      Inherited(STD_INPUT_HANDLE), Inherited(STD_OUTPUT_HANDLE), Inherited(STD_ERROR_HANDLE)};
  std::array<HANDLE, 3> list_{};
  std::unique_ptr<char[]> memory_;
  STARTUPINFOEXA info_{};
};

struct TStarted {
  THandle process;
  THandle thread;
};

TStarted StartSuspended(const TProgramStart& start) {
  constexpr DWORD kFlags =
      CREATE_SUSPENDED | CREATE_NEW_PROCESS_GROUP | EXTENDED_STARTUPINFO_PRESENT;
  TCommand command = CommandFor(start.commandLine);
  const std::string folder(start.folder);
  TStartSetup setup(start.hidden);
  PROCESS_INFORMATION started{};
  const TNoErrorBoxes quiet;
  if (!::CreateProcessA(command.program.c_str(), command.line.data(), nullptr, nullptr, TRUE,
                        kFlags, nullptr, folder.empty() ? nullptr : folder.c_str(), setup.Get(),
                        &started)) {
    throw EPlatformError(LastErrorCode(), command.program);
  }
  return {THandle(started.hProcess), THandle(started.hThread)};
}

/// Whether a process that ended by itself with this code was ended by an exception: the errors of
/// the system and of run-time libraries, what only a debugger goes on from (a break point, say),
/// and a run-time library that gave up.
bool IsException(DWORD exitCode) noexcept {
  constexpr DWORD kFatalExit = 0x40000015;
  return exitCode >> 28 == 0xC || exitCode >> 28 == 0xE ||
         (exitCode >= EXCEPTION_GUARD_PAGE && exitCode <= EXCEPTION_SINGLE_STEP) ||
         exitCode == kFatalExit;
}

/// False when the system does not limit it so.
bool LimitJob(HANDLE job, DWORD limits) noexcept {
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION information{};
  information.BasicLimitInformation.LimitFlags = limits;
  return ::SetInformationJobObject(job, JobObjectExtendedLimitInformation, &information,
                                   sizeof information) != 0;
}

}  // namespace

struct TProcess::TState {
  explicit TState(const TProgramStart& start) : TState(StartSuspended(start), start.bound) {}
  TState(TStarted started, bool isBound)
      : process(std::move(started.process)), job(::CreateJobObjectA(nullptr, nullptr)) {
    if (job && isBound) bound = LimitJob(job.Get(), JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE);
    if (job && !::AssignProcessToJobObject(job.Get(), process.Get())) job.Close();
    ::ResumeThread(started.thread.Get());
  }

  TState(const TState&) = delete;
  TState& operator=(const TState&) = delete;
  ~TState() {
    if (job && bound) LimitJob(job.Get(), 0);
  }

  bool WaitFor(DWORD time) const noexcept {
    return ::WaitForSingleObject(process.Get(), time) == WAIT_OBJECT_0;
  }
  DWORD ExitCode() const noexcept {
    if (givenUp) return *givenUp;
    DWORD code = kStillActive;
    ::GetExitCodeProcess(process.Get(), &code);
    return code;
  }

  THandle process;
  THandle job;  // none where this process may not give one
  bool bound = false;
  bool terminated = false;
  std::optional<DWORD> givenUp;  // the exit code of one that would not die
};

TProcess::TProcess(const TProgramStart& start) : state_(std::make_unique<TState>(start)) {}

TProcess::~TProcess() = default;

bool TProcess::Wait(std::optional<milliseconds> limit) {
  using std::chrono::steady_clock;
  constexpr milliseconds kLongestSleep{1'000'000'000};
  if (!limit) return state_->WaitFor(INFINITE);
  const auto end = steady_clock::now() + *limit;
  while (true) {
    const auto left = std::clamp(std::chrono::ceil<milliseconds>(end - steady_clock::now()),
                                 milliseconds::zero(), kLongestSleep);
    if (state_->WaitFor(static_cast<DWORD>(left.count()))) return true;
    if (steady_clock::now() >= end) return false;
  }
}

void TProcess::Terminate(uint32_t exitCode) {
  constexpr DWORD kLongestDeath = 10'000;  // milliseconds
  if (state_->WaitFor(0)) return;
  if (!state_->job || !::TerminateJobObject(state_->job.Get(), exitCode)) {
    ::TerminateProcess(state_->process.Get(), exitCode);
  }
  if (!state_->WaitFor(kLongestDeath)) state_->givenUp = exitCode;
  state_->terminated = state_->ExitCode() == exitCode;
}

uint32_t TProcess::ExitCode() { return state_->ExitCode(); }

bool TProcess::Crashed() {
  return !state_->terminated && state_->WaitFor(0) && IsException(state_->ExitCode());
}

bool StartsDosProgramsThroughPif() noexcept {
  OSVERSIONINFOA version{};
  version.dwOSVersionInfoSize = sizeof version;
  return ::GetVersionExA(&version) && version.dwPlatformId == VER_PLATFORM_WIN32_WINDOWS;
}

}  // namespace quarda::platform
