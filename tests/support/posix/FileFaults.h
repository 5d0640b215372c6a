// Faults of the file system on request, for test programs that call qd_file_faults in their
// CMakeLists.txt: the file calls of the backend, with a hook before each that can change something.
#pragma once

#include <functional>
#include <string_view>

namespace quarda::test {

/// Is told the name of the system call ("rename"; "open" for reading, else "open for writing"); the
/// call fails with the error that it returns,
/// and is made when that is 0.
using TFileHook = std::function<int(std::string_view call)>;

/// Hooks into the file calls for a scope, one at a time.
class TFileFaults {
 public:
  explicit TFileFaults(TFileHook hook);
  TFileFaults(const TFileFaults&) = delete;
  TFileFaults& operator=(const TFileFaults&) = delete;
  ~TFileFaults();
};

/// Runs the body in a process of its own that is killed right before its n-th file call, so that
/// no destructor runs. False when the body came to its end first.
bool DiesAtFileCall(int n, const std::function<void()>& body);

}  // namespace quarda::test
