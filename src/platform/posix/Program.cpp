#include "Program.h"

#include <dlfcn.h>
#include <link.h>
#include <sys/auxv.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>

#include "FileCalls.h"
#include "Files.h"
#include "Paths.h"
#include "PlatformError.h"
#include "Quiet.h"

namespace quarda::platform {

using namespace posix;

namespace {

/// What the system handed to this process; set before anything else runs, never changed. The
/// files under /proc tell the same, but making them costs a process as much as a dozen other files.
struct TGiven {
  int count = 0;
  char** arguments = nullptr;
};

constinit TGiven given;

/// The loader hands the arguments of the program to whatever runs first in a module.
[[gnu::constructor]] void KeepArguments(int count, char** arguments, char**) noexcept {
  given = {count, arguments};
}

/// The file under the absolute name by which the program was started, or else the system's answer.
std::string NativeProgram() {
  const auto* const started = reinterpret_cast<const char*>(::getauxval(AT_EXECFN));
  const bool isAbsolute = started != nullptr && *started == '/';
  const std::unique_ptr<char, decltype(&std::free)> real(
      isAbsolute ? ::realpath(started, nullptr) : nullptr, std::free);
  if (real != nullptr) return real.get();
  std::string native;
  if (ReadLink("/proc/self/exe", native) != 0) throw EPlatformError(LastErrorCode(), "program");
  return native;
}

std::string ArgumentFrom(const std::string& argument) {
  struct stat info;
  const bool isPath = argument.starts_with('/') && StatPath(argument, info) == 0;
  return isPath ? WindowsPath(argument) : argument;
}

}  // namespace

std::string ProgramPath() {
  static const std::string path = WindowsPath(NativeProgram());
  return path;
}

std::string ProgramFolder() {
  const std::string path = ProgramPath();
  return path.substr(0, path.rfind('\\'));
}

std::vector<std::string> ProgramArguments() {
  std::vector<std::string> arguments{ProgramPath()};
  for (int i = 1; i < given.count; ++i) arguments.push_back(ArgumentFrom(given.arguments[i]));
  return arguments;
}

bool IsCompanion(uint32_t process) noexcept {
  return OrElse(false, [&] {
    std::string program;
    if (ReadLink("/proc/" + std::to_string(process) + "/exe", program) != 0) return false;
    const std::string path = WindowsPath(program);
    return path.substr(0, path.rfind('\\')) == ProgramFolder();
  });
}

int32_t RunInPlace(std::string_view name) {
  std::string program = NativeProgram();
  program.resize(program.rfind('/') + 1);
  program.append(name);
  std::vector<char*> arguments{program.data()};
  for (int i = 1; i < given.count; ++i) arguments.push_back(given.arguments[i]);
  arguments.push_back(nullptr);
  ::execv(program.c_str(), arguments.data());
  throw EPlatformError(LastErrorCode(), WindowsPath(program));
}

uint32_t ProcessId() noexcept { return static_cast<uint32_t>(::getpid()); }

std::string ModulePath() {
  static const char inThisModule = 0;
  Dl_info info{};
  link_map* module = nullptr;
  const bool found =
      ::dladdr1(&inThisModule, &info, reinterpret_cast<void**>(&module), RTLD_DL_LINKMAP) != 0;
  const std::string native = found && module != nullptr ? module->l_name : "";
  if (native.empty()) return ProgramPath();  // the loader has no name for the program itself
  return FullPath(WindowsPath(native));
}

}  // namespace quarda::platform
