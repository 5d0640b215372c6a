// Compiles the backend's own source once more, with the system calls in it renamed. The linker then
// has all of its functions and leaves the original in the library.
#include "FileFaults.h"

#include <FileCalls.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <stdexcept>

namespace {

quarda::test::TFileHook hook;  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

}  // namespace

template <class Call>
static auto Hooked(std::string_view name, Call call) {
  const int error = hook ? hook(name) : 0;
  if (error == 0) return call();
  errno = error;
  return decltype(call())(-1);
}

static std::string_view OpenName(const char*, int flags, mode_t) {
  return (flags & O_ACCMODE) == O_RDONLY ? "open" : "open for writing";
}

namespace quarda::test {

TFileFaults::TFileFaults(TFileHook wanted) { hook = std::move(wanted); }

TFileFaults::~TFileFaults() { hook = nullptr; }

bool DiesAtFileCall(int n, const std::function<void()>& body) {
  const pid_t child = ::fork();
  if (child == 0) {
    const TFileFaults faults([&](std::string_view) { return --n == 0 ? ::raise(SIGKILL) : 0; });
    body();
    ::_exit(0);
  }
  int status = 0;
  if (child < 0 || ::waitpid(child, &status, 0) != child) throw std::runtime_error("no child");
  if (status == 0) return false;
  if (WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) return true;
  throw std::runtime_error("the child ended in another way");
}

}  // namespace quarda::test

// Every use in the source stands behind "::", so the name that takes its place is global.
#define open(...) Hooked(OpenName(__VA_ARGS__), [&] { return ::open(__VA_ARGS__); })
#define write(...) Hooked("write", [&] { return ::write(__VA_ARGS__); })
#define ftruncate(...) Hooked("ftruncate", [&] { return ::ftruncate(__VA_ARGS__); })
#define fallocate(...) Hooked("fallocate", [&] { return ::fallocate(__VA_ARGS__); })
#define fsync(...) Hooked("fsync", [&] { return ::fsync(__VA_ARGS__); })
#define fchmod(...) Hooked("fchmod", [&] { return ::fchmod(__VA_ARGS__); })
#define fchown(...) Hooked("fchown", [&] { return ::fchown(__VA_ARGS__); })
#define futimens(...) Hooked("futimens", [&] { return ::futimens(__VA_ARGS__); })
#define chmod(...) Hooked("chmod", [&] { return ::chmod(__VA_ARGS__); })
#define utimensat(...) Hooked("utimensat", [&] { return ::utimensat(__VA_ARGS__); })
#define mkdir(...) Hooked("mkdir", [&] { return ::mkdir(__VA_ARGS__); })
#define unlink(...) Hooked("unlink", [&] { return ::unlink(__VA_ARGS__); })
#define unlinkat(...) Hooked("unlinkat", [&] { return ::unlinkat(__VA_ARGS__); })
#define rename(...) Hooked("rename", [&] { return ::rename(__VA_ARGS__); })
#define renameat2(...) Hooked("renameat2", [&] { return ::renameat2(__VA_ARGS__); })
#include <FileCalls.cpp>
