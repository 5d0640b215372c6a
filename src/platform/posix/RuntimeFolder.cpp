#include "RuntimeFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "Paths.h"
#include "PlatformError.h"

namespace quarda::platform::posix {
namespace {

constexpr std::chrono::seconds kLongestWait{2};
constexpr std::chrono::microseconds kShortestPause{100};
constexpr std::chrono::microseconds kLongestPause{10'000};

[[noreturn]] void Raise(int code, const std::string& native) {
  throw EPlatformError(static_cast<uint32_t>(code), ToWindows(native));
}

std::string ParentFolder() {
  for (const char* variable : {"XDG_RUNTIME_DIR", "TMPDIR"}) {
    const char* const folder = std::getenv(variable);
    if (folder != nullptr && *folder == '/') return folder;
  }
  return "/tmp";
}

int Open(const std::string& path) noexcept {
  return OpenFile(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
}

/// False when somebody else has it.
bool TryLock(int folder) {
  if (::flock(folder, LOCK_EX | LOCK_NB) == 0) return true;
  if (errno == EWOULDBLOCK || errno == EINTR) return false;
  throw EPlatformError(LastErrorCode(), "lock of the named objects");
}

}  // namespace

TRuntimeFolder::TRuntimeFolder()
    : path_(ParentFolder() + "/quarda-" + std::to_string(::geteuid())), folder_(Open(path_)) {
  if (!folder_ && errno == ENOENT) {
    constexpr mode_t kForUser = 0700;
    if (::mkdir(path_.c_str(), kForUser) != 0 && errno != EEXIST) Raise(errno, path_);
    folder_.Reset(Open(path_));
  }
  struct stat info;
  if (!folder_ || StatOpenFile(folder_.Get(), info) != 0) Raise(errno, path_);
  // Below a folder that all may write to, somebody else may have made it first.
  if (info.st_uid != ::geteuid() || (info.st_mode & 077) != 0) Raise(EPERM, path_);
}

std::string TRuntimeFolder::Path(std::string_view name) const {
  return std::string(path_).append("/").append(name);
}

TRuntimeLock::TRuntimeLock() {
  const auto end = std::chrono::steady_clock::now() + kLongestWait;
  auto pause = kShortestPause;
  while (!TryLock(folder_.Get())) {
    if (std::chrono::steady_clock::now() > end) Raise(ETIMEDOUT, folder_.Path(""));
    std::this_thread::sleep_for(pause);
    pause = std::min(2 * pause, kLongestPause);
  }
}

}  // namespace quarda::platform::posix
