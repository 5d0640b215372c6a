// What makes a scan of a file do in one process what it does in another. Where the system keeps
// rights for a process (groups, capabilities) those count; on Windows only whether the file can be
// read does, for processes that reach the same named objects are of one session.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace quarda::platform {

/// 16 digits for what a process keeps for life and what decides its scans: the folder of the
/// program, the root folder, rights, limits, the variables that lead to files and programs, and the
/// state of the library that scans, which changes when a new version takes its place. Empty when
/// the system does not tell.
std::string ProcessCircumstances(std::string_view library) noexcept;

/// 16 digits, the same in two processes in which a scan of the file does the same. They stand for
/// `process`, which the function above gave, the current folder, the name of the file as it is
/// written and the file found under it. Empty when there is none or this process cannot read it.
std::string ScanCircumstances(std::string_view file, std::string_view process) noexcept;

/// Marks this process, and what it starts from now on, as a resident engine's: none of them may
/// wait for the engine, which may be waiting for them. Raises EPlatformError.
void MarkAsServing();
/// Whether this process or one that it descends from is marked so.
bool IsServing() noexcept;
/// The variable that carries the mark.
inline constexpr const char* kServing = "QUARDA_SERVING";

/// Makes a folder the current one for a scope; raises EPlatformError when that cannot be done. The
/// current folder belongs to the whole process.
class TFolderVisit {
 public:
  explicit TFolderVisit(std::string_view folder);
  TFolderVisit(const TFolderVisit&) = delete;
  TFolderVisit& operator=(const TFolderVisit&) = delete;
  ~TFolderVisit();

 private:
  struct TState;
  std::unique_ptr<TState> state_;
};

}  // namespace quarda::platform
