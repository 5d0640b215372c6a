// By rights, limits, mounts, variables and the files themselves, of which the system keeps a
// number.
#include "Circumstances.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <concepts>
#include <cstdlib>
#include <vector>

#include "FileCalls.h"
#include "HashText.h"
#include "Paths.h"
#include "PlatformError.h"
#include "Program.h"
#include "Quiet.h"

namespace quarda::platform {

using namespace posix;

namespace {

[[noreturn]] void Raise(std::string_view what) { throw EPlatformError(LastErrorCode(), what); }

/// Facts as one text, each ended by a NUL, which none of them holds.
class TFacts {
 public:
  void Add(std::string_view fact) { text_.append(fact).append(1, '\0'); }
  template <std::integral... T>
  void Add(T... facts) {
    (Add(std::string_view(std::to_string(facts))), ...);
  }
  const std::string& Text() const noexcept { return text_; }

 private:
  std::string text_;
};

void AddPlace(TFacts& facts, const struct statx& info) {
  facts.Add(info.stx_dev_major, info.stx_dev_minor, info.stx_ino, info.stx_mnt_id);
}

void AddFolder(TFacts& facts, const std::string& native) {
  struct statx info;
  if (StatMounted(native, info) != 0) Raise(native);
  facts.Add(native);
  AddPlace(facts, info);
}

void AddLibrary(TFacts& facts, std::string_view path) {
  struct statx info;
  const auto find = [&](const std::string& native) { return StatMounted(native, info); };
  if (OnExisting(path, find) != 0) Raise(path);
  AddPlace(facts, info);
  facts.Add(info.stx_size, info.stx_mtime.tv_sec, info.stx_mtime.tv_nsec);
}

void AddFile(TFacts& facts, std::string_view path) {
  int opened = -1;
  const int found = OnExisting(path, [&](const std::string& native) {
    opened = OpenFile(native, O_RDONLY | O_NONBLOCK);
    return opened < 0 ? -1 : 0;
  });
  const TDescriptor file(opened);
  struct statx info;
  if (found != 0 || StatMountedOpenFile(opened, info) != 0) Raise(path);
  if (!S_ISREG(info.stx_mode)) throw EPlatformError(EINVAL, path);
  facts.Add(path);
  AddPlace(facts, info);
}

/// With the group of the process, which some programs name twice.
std::vector<gid_t> Groups(gid_t own) {
  const int count = ::getgroups(0, nullptr);
  if (count < 0) Raise("groups");
  std::vector<gid_t> groups(static_cast<size_t>(count));
  if (::getgroups(count, groups.data()) != count) Raise("groups");
  groups.push_back(own);
  std::ranges::sort(groups);
  groups.erase(std::unique(groups.begin(), groups.end()), groups.end());
  return groups;
}

void AddRights(TFacts& facts) {
  std::array<uid_t, 3> users{};
  std::array<gid_t, 3> groups{};
  if (::getresuid(&users[0], &users[1], &users[2]) != 0 ||
      ::getresgid(&groups[0], &groups[1], &groups[2]) != 0) {
    Raise("user");
  }
  for (const uid_t user : users) facts.Add(user);
  for (const gid_t group : groups) facts.Add(group);
  const std::vector<gid_t> all = Groups(groups[1]);
  facts.Add(all.size());
  for (const gid_t group : all) facts.Add(group);
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> capabilities{};
  if (::syscall(SYS_capget, &header, capabilities.data()) != 0) Raise("capabilities");
  for (const auto& part : capabilities) facts.Add(part.effective, part.permitted, part.inheritable);
  facts.Add(::prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0));
}

/// Those that let a large mail pass: what needs more memory or a longer file is not scanned.
void AddLimits(TFacts& facts) {
  for (const auto limit : {RLIMIT_AS, RLIMIT_DATA, RLIMIT_FSIZE}) {
    rlimit value{};
    if (::getrlimit(limit, &value) != 0) Raise("limits");
    facts.Add(value.rlim_cur);
  }
}

void AddVariables(TFacts& facts) {
  for (const char* name : {"QUARDA_DRIVES", "PATH", "TMPDIR", "LD_LIBRARY_PATH"}) {
    const char* const value = std::getenv(name);
    facts.Add(value != nullptr);
    if (value != nullptr) facts.Add(std::string_view(value));
  }
}

}  // namespace

std::string ProcessCircumstances(std::string_view library) noexcept {
  return OrElse(std::string(), [&] {
    TFacts facts;
    AddLibrary(facts, library);
    AddFolder(facts, "/");
    AddFolder(facts, ToNative(ProgramFolder()).value_or("."));
    AddRights(facts);
    AddLimits(facts);
    AddVariables(facts);
    return HashText(facts.Text());
  });
}

void MarkAsServing() {
  if (::setenv(kServing, "1", 1) != 0) Raise(kServing);
}

bool IsServing() noexcept { return std::getenv(kServing) != nullptr; }

std::string ScanCircumstances(std::string_view file, std::string_view process) noexcept {
  return OrElse(std::string(), [&] {
    TFacts facts;
    facts.Add(process);
    AddFolder(facts, ".");
    AddFile(facts, file);
    return HashText(facts.Text());
  });
}

struct TFolderVisit::TState {
  explicit TState(std::string_view folder) : before(OpenFile(".", O_PATH | O_DIRECTORY)) {
    if (!before || OnExisting(folder, EnterFolder) != 0) Raise(folder);
  }

  TDescriptor before;
};

TFolderVisit::TFolderVisit(std::string_view folder) : state_(std::make_unique<TState>(folder)) {}

TFolderVisit::~TFolderVisit() {
  // Nobody may be kept from the folder of a scan by a process that only could not leave it.
  if (EnterOpenFolder(state_->before.Get()) != 0) EnterFolder("/");
}

}  // namespace quarda::platform
