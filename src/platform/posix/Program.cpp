#include "Program.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

#include "FileCalls.h"
#include "Files.h"
#include "Paths.h"
#include "PlatformError.h"
#include "Quiet.h"

namespace quarda::platform {

using namespace posix;

namespace {

/// The arguments one behind the other, each closed by a NUL.
std::string ReadCommandLine() {
  constexpr const char* kSource = "/proc/self/cmdline";
  const TDescriptor file(OpenFile(kSource, O_RDONLY));
  std::string text;
  std::array<char, 4096> buffer;
  ssize_t size = file ? 1 : -1;
  while (size > 0) {
    size = ReadSome(file.Get(), buffer.data(), buffer.size());
    if (size > 0) text.append(buffer.data(), static_cast<size_t>(size));
  }
  if (size < 0) throw EPlatformError(LastErrorCode(), WindowsPath(kSource));
  return text;
}

/// Read once.
const std::string& CommandLine() {
  static const std::string text = ReadCommandLine();
  return text;
}

std::string FindProgram() {
  std::string native;
  if (ReadLink("/proc/self/exe", native) != 0) throw EPlatformError(LastErrorCode(), "program");
  return WindowsPath(native);
}

std::string ArgumentFrom(const std::string& given) {
  struct stat info;
  const bool isPath = given.starts_with('/') && StatPath(given, info) == 0;
  return isPath ? WindowsPath(given) : given;
}

}  // namespace

std::string ProgramPath() {
  static const std::string path = FindProgram();
  return path;
}

std::string ProgramFolder() {
  const std::string path = ProgramPath();
  return path.substr(0, path.rfind('\\'));
}

std::vector<std::string> ProgramArguments() {
  std::vector<std::string> arguments{ProgramPath()};
  const std::string& text = CommandLine();
  size_t start = text.find('\0');
  while (start != std::string::npos && ++start < text.size()) {
    const size_t end = text.find('\0', start);
    arguments.push_back(ArgumentFrom(text.substr(start, end - start)));
    start = end;
  }
  return arguments;
}

bool IsCompanion(uint32_t process, std::string_view file) noexcept {
  return OrElse(false, [&] {
    const std::string place = "/proc/" + std::to_string(process);
    std::string program;
    if (ReadLink(place + "/exe", program) != 0) return false;
    std::string folder = WindowsPath(program);
    folder.resize(folder.rfind('\\'));
    if (folder != ProgramFolder()) return false;
    if (file.empty()) return true;
    std::string native;
    struct stat ours;
    struct stat theirs;
    const auto find = [&](const std::string& path) { return StatPath(native = path, ours); };
    return OnExisting(file, find) == 0 && StatPath(place + "/root" + native, theirs) == 0 &&
           ours.st_dev == theirs.st_dev && ours.st_ino == theirs.st_ino;
  });
}

int32_t RunInPlace(std::string_view name) {
  std::string text = CommandLine();
  std::string program;
  if (ReadLink("/proc/self/exe", program) != 0) throw EPlatformError(LastErrorCode(), "program");
  program.resize(program.rfind('/') + 1);
  program.append(name);
  std::vector<char*> arguments{program.data()};
  for (size_t at = text.find('\0'); at != std::string::npos && ++at < text.size();) {
    arguments.push_back(text.data() + at);
    at = text.find('\0', at);
  }
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
