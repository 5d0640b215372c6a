// This program, its modules and its arguments.
#include "Program.h"

#include "CodePage.h"
#include "Files.h"
#include "Paths.h"
#include "Process.h"
#include "Quiet.h"
#include "System.h"

namespace quarda::platform {

namespace win32 {

HMODULE ThisModule() noexcept {
  static const char inThisModule = 0;
  HMODULE module = nullptr;
  ::GetModuleHandleExA(
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
      &inThisModule, &module);
  return module;
}

}  // namespace win32

using namespace win32;

namespace {

std::string PathOf(HMODULE module) {
  return TextOf([&](char* text, DWORD size) { return ::GetModuleFileNameA(module, text, size); });
}

std::string ArgumentFrom(std::string given) {
  const bool differs = HasDriveAndRoot(given) && given.find('/') != std::string::npos;
  if (!differs || ::GetFileAttributesA(given.c_str()) == INVALID_FILE_ATTRIBUTES) return given;
  return WindowsPath(given);
}

}  // namespace

std::string ProgramPath() {
  static const std::string path = PathOf(nullptr);
  return path;
}

std::string ProgramFolder() {
  const std::string path = ProgramPath();
  return path.substr(0, path.rfind('\\'));
}

std::vector<std::string> ProgramArguments() {
  std::vector<std::string> arguments = SplitProgramLine(::GetCommandLineA());
  arguments.resize(std::max<size_t>(arguments.size(), 1));
  arguments.front() = ProgramPath();
  for (size_t i = 1; i < arguments.size(); ++i) {
    arguments[i] = ArgumentFrom(std::move(arguments[i]));
  }
  return arguments;
}

bool IsCompanion(uint32_t process) noexcept {
  return OrElse(false, [&] {
    const THandle other(::OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, process));
    const std::string program = TextOf([&](char* text, DWORD size) {
      const bool known = other && ::QueryFullProcessImageNameA(other.Get(), 0, text, &size);
      return known ? size : 0;
    });
    const size_t end = program.rfind('\\');
    return end != std::string::npos && SameAnsiText(program.substr(0, end), ProgramFolder());
  });
}

int32_t RunInPlace(std::string_view name) {
  const std::string_view given = ::GetCommandLineA();
  const std::string_view own = RawProgramLine(given).front();
  std::string line = QuoteArgument(ProgramFolder() + "\\" + std::string(name));
  line += given.substr(static_cast<size_t>(own.data() + own.size() - given.data()));
  TProcess program({line, {}, false, true});
  program.Wait(std::nullopt);
  return static_cast<int32_t>(program.ExitCode());
}

uint32_t ProcessId() noexcept { return ::GetCurrentProcessId(); }

std::string ModulePath() { return PathOf(ThisModule()); }

}  // namespace quarda::platform
