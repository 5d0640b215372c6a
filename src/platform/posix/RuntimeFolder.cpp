#include "RuntimeFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "Paths.h"
#include "PlatformError.h"

namespace quarda::platform::posix {
namespace {

[[noreturn]] void Raise(int code, const std::string& native) {
  throw EPlatformError(static_cast<uint32_t>(code), ToWindows(native));
}

/// In a folder that all may write to, somebody else may have made it first.
std::string OwnFolder(const std::string& parent) {
  constexpr mode_t kForUser = 0700;
  std::string path = parent + "/quarda-" + std::to_string(::geteuid());
  struct stat info;
  if (::mkdir(path.c_str(), kForUser) != 0 && errno != EEXIST) Raise(errno, path);
  if (StatLink(path, info) != 0) Raise(errno, path);
  const bool isOurs = S_ISDIR(info.st_mode) && info.st_uid == ::geteuid();
  if (!isOurs || (info.st_mode & 077) != 0) Raise(EPERM, path);
  return path;
}

std::string ParentFolder() {
  for (const char* variable : {"XDG_RUNTIME_DIR", "TMPDIR"}) {
    const char* const folder = std::getenv(variable);
    if (folder != nullptr && *folder == '/') return folder;
  }
  return "/tmp";
}

}  // namespace

std::string RuntimePath(std::string_view name) {
  return OwnFolder(ParentFolder()).append("/").append(name);
}

TRuntimeLock::TRuntimeLock()
    : file_(OpenFile(RuntimePath("lock"), O_RDWR | O_CREAT | O_NOFOLLOW, 0600)) {
  int result = file_ ? 0 : -1;
  do {
    if (file_) result = ::flock(file_.Get(), LOCK_EX);
  } while (result != 0 && errno == EINTR);
  if (result != 0) throw EPlatformError(LastErrorCode(), "lock of the named objects");
}

}  // namespace quarda::platform::posix
