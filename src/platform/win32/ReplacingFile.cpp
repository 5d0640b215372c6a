// New content is written to ".quarda-<16 hex digits>.tmp" in the folder of the file it replaces.
// A process killed before the rename leaves that file behind; one replacement in 64, chosen by the
// random number of its own name, therefore looks through the folder and deletes those that are
// older than a day.
//
// The rename is one step for the file system, so that a process killed at any moment leaves the old
// or the new content; the system's call for replacing files takes two. What that call would take
// over from the old file is given to the new one beforehand: owner, access rights, attributes.
#include <array>
#include <cstdint>
#include <vector>

#include "FileCalls.h"
#include "Files.h"
#include "LocalTime.h"
#include "Paths.h"
#include "PlatformError.h"
#include "WriteBuffer.h"

namespace quarda::platform {

using namespace win32;

namespace {

constexpr std::string_view kPrefix = ".quarda-";
constexpr std::string_view kSuffix = ".tmp";
constexpr size_t kDigits = 16;
constexpr size_t kBufferSize = 65536;
constexpr SECURITY_INFORMATION kOwner = OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION;
constexpr SECURITY_INFORMATION kRights = DACL_SECURITY_INFORMATION;

/// Names only have to differ; that none is taken over is the matter of exclusive creation.
uint64_t RandomNumber() noexcept {
  static uint64_t count = 0;
  LARGE_INTEGER ticks{};
  ::QueryPerformanceCounter(&ticks);
  const uint64_t seed = (static_cast<uint64_t>(ticks.QuadPart) << 20) ^ ++count ^
                        (static_cast<uint64_t>(::GetCurrentProcessId()) << 44);
  uint64_t mixed = seed * 0x9E3779B97F4A7C15;
  mixed = (mixed ^ mixed >> 32) * 0xD6E8FEB86659FD93;
  return mixed ^ mixed >> 32;
}

std::string TemporaryName(uint64_t number) {
  std::string name(kPrefix);
  for (size_t i = 0; i < kDigits; ++i) name += "0123456789abcdef"[number >> (i * 4) & 15];
  return name.append(kSuffix);
}

bool IsOlderThanADay(const FILETIME& time) noexcept {
  constexpr uint64_t kDay = 86'400ull * 10'000'000;
  const auto number = [](const FILETIME& t) {
    return static_cast<uint64_t>(t.dwHighDateTime) << 32 | t.dwLowDateTime;
  };
  FILETIME now{};
  ::GetSystemTimeAsFileTime(&now);
  return number(time) + kDay < number(now);
}

/// Deletes what killed processes left behind.
void RemoveStaleFiles(const std::string& folder) noexcept {
  WIN32_FIND_DATAA found{};
  const HANDLE finder = ::FindFirstFileA((folder + ".quarda-????????????????.tmp").c_str(), &found);
  if (finder == INVALID_HANDLE_VALUE) return;
  do {
    const bool isFile = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
    const bool hasSize =
        std::string_view(found.cFileName).size() == kPrefix.size() + kDigits + kSuffix.size();
    if (isFile && hasSize && IsOlderThanADay(found.ftLastWriteTime)) {
      ::DeleteFileA((folder + found.cFileName).c_str());
    }
  } while (::FindNextFileA(finder, &found));
  ::FindClose(finder);
}

/// Whether a file cannot be made in a folder that is there because its path would be too long.
bool IsTooLong(DWORD code) noexcept {
  return code == ERROR_PATH_NOT_FOUND || code == ERROR_FILENAME_EXCED_RANGE;
}

/// These parts of a file's security as the system writes them; empty when it does not tell.
std::vector<char> SecurityOf(const std::string& path, SECURITY_INFORMATION parts) {
  DWORD size = 0;
  ::GetFileSecurityA(path.c_str(), parts, nullptr, 0, &size);
  std::vector<char> security(size);
  if (!::GetFileSecurityA(path.c_str(), parts, security.data(), size, &size)) return {};
  return security;
}

/// False when this user may not give the one file what the other one has.
bool CopySecurity(const std::string& from, const std::string& to, SECURITY_INFORMATION parts) {
  std::vector<char> security = SecurityOf(from, parts);
  return security.empty() || security == SecurityOf(to, parts) ||
         ::SetFileSecurityA(to.c_str(), parts, security.data()) != 0;
}

/// Where a link leads; the path itself when that cannot be told.
std::string TargetOfLink(const std::string& path) {
  constexpr std::string_view kPlainPath = "\\\\?\\";
  const THandle file(OpenFile(path, FILE_READ_ATTRIBUTES, OPEN_EXISTING));
  const std::string target = TextOf([&](char* text, DWORD size) {
    return ::GetFinalPathNameByHandleA(file.Get(), text, size, FILE_NAME_NORMALIZED);
  });
  const bool isPlain = target.starts_with(kPlainPath) && target.size() > 5 && target[5] == ':';
  return isPlain ? target.substr(kPlainPath.size()) : path;
}

}  // namespace

struct TReplacingFile::TState {
  TState(std::string_view given, TDurability wanted)
      : path(given), flushed(wanted == TDurability::kFlushed) {}
  ~TState() { Abandon(); }

  [[noreturn]] void Raise() const { Raise(LastErrorCode()); }
  [[noreturn]] void Raise(DWORD code) const { throw EPlatformError(code, path); }

  void FindTarget();
  void CreateTemporary();
  void OpenTarget();
  bool TakeOverSecurity();
  void Abandon() noexcept;
  void WriteOut(const void* data, size_t size);
  bool Rename() noexcept;
  void RenameIntoPlace();
  void WriteInPlace();

  std::string path;  // as the caller gave it, for error texts
  bool flushed;
  std::string target;  // links followed
  DWORD attributes = INVALID_FILE_ATTRIBUTES;
  bool exists = false;
  std::string temporary;  // empty when there is none
  THandle file;           // the temporary, or the target when that is written in place
  std::string buffer;     // not yet written; everything when the target is written in place
  bool inPlace = false;
  bool done = false;
};

void TReplacingFile::TState::FindTarget() {
  const std::optional<std::string> name = SystemPath(path);
  if (!name) Raise();
  target = *name;
  attributes = ::GetFileAttributesA(target.c_str());
  exists = attributes != INVALID_FILE_ATTRIBUTES;
  if (!exists) return;
  if ((attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY)) != 0) {
    Raise(ERROR_ACCESS_DENIED);
  }
  if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) target = TargetOfLink(target);
}

void TReplacingFile::TState::CreateTemporary() {
  const std::string folder = target.substr(0, NameStart(target));
  do {
    const uint64_t number = RandomNumber();
    temporary = folder + TemporaryName(number);
    file = THandle(OpenFile(temporary, GENERIC_WRITE, CREATE_NEW));
    if (file && number % 64 == 0) RemoveStaleFiles(folder);
  } while (!file && ::GetLastError() == ERROR_FILE_EXISTS);
  if (!file) {
    const DWORD code = ::GetLastError();
    temporary.clear();
    inPlace = exists && (code == ERROR_ACCESS_DENIED || IsTooLong(code));
    if (!inPlace) Raise(code);
  } else if (exists && !TakeOverSecurity()) {
    Abandon();
    inPlace = true;
  }
}

/// Before anything is written, so that a file this user may not write either is noticed as early
/// as one that cannot be created.
void TReplacingFile::TState::OpenTarget() {
  file = THandle(OpenFile(target, GENERIC_WRITE, OPEN_EXISTING));
  if (!file) Raise();
}

/// False when the system does not let this user make such a file.
bool TReplacingFile::TState::TakeOverSecurity() {
  const DWORD wanted = attributes & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM);
  if (wanted != 0) ::SetFileAttributesA(temporary.c_str(), wanted | FILE_ATTRIBUTE_ARCHIVE);
  return CopySecurity(target, temporary, kOwner) && CopySecurity(target, temporary, kRights);
}

void TReplacingFile::TState::Abandon() noexcept {
  file = THandle();
  if (!temporary.empty()) ::DeleteFileA(temporary.c_str());
  temporary.clear();
}

void TReplacingFile::TState::WriteOut(const void* data, size_t size) {
  if (!WriteAll(file.Get(), data, size)) Raise();
}

/// A virus guard or an indexer may hold the old file for a moment, in a way that forbids to replace
/// it; it is tried for a second.
bool TReplacingFile::TState::Rename() noexcept {
  constexpr int kTries = 50;
  constexpr DWORD kPause = 20;  // milliseconds
  const DWORD flags = MOVEFILE_REPLACE_EXISTING | (flushed ? MOVEFILE_WRITE_THROUGH : 0);
  for (int i = 1; !::MoveFileExA(temporary.c_str(), target.c_str(), flags); ++i) {
    const DWORD code = ::GetLastError();
    if (i == kTries || (code != ERROR_ACCESS_DENIED && code != ERROR_SHARING_VIOLATION)) {
      return false;
    }
    ::Sleep(kPause);
  }
  return true;
}

void TReplacingFile::TState::RenameIntoPlace() {
  WriteOut(buffer.data(), buffer.size());
  if (flushed && !::FlushFileBuffers(file.Get())) Raise();
  if (!file.Close()) Raise();
  if (!Rename()) Raise();
  temporary.clear();
}

/// Takes the room first, so that a full disk is noticed while the old content is still whole.
void TReplacingFile::TState::WriteInPlace() {
  LARGE_INTEGER old{};
  if (!::GetFileSizeEx(file.Get(), &old)) Raise();
  const auto oldSize = static_cast<uint64_t>(old.QuadPart);
  if (buffer.size() > oldSize && !ResizeFile(file.Get(), buffer.size())) {
    const DWORD code = ::GetLastError();
    ResizeFile(file.Get(), oldSize);
    Raise(code);
  }
  if (!SeekFile(file.Get(), 0)) Raise();
  WriteOut(buffer.data(), buffer.size());
  if (!::SetEndOfFile(file.Get())) Raise();
  if (flushed && !::FlushFileBuffers(file.Get())) Raise();
  if (!file.Close()) Raise();
}

TReplacingFile::TReplacingFile(std::string_view path, TDurability durability)
    : state_(std::make_unique<TState>(path, durability)) {
  state_->FindTarget();
  state_->CreateTemporary();
  if (state_->inPlace) state_->OpenTarget();
}

TReplacingFile::~TReplacingFile() = default;

void TReplacingFile::Write(const void* data, size_t size) {
  TState& state = *state_;
  if (state.done) state.Raise(ERROR_INVALID_HANDLE);
  const size_t limit = state.inPlace ? SIZE_MAX : kBufferSize;
  const auto writeOut = [&state](const void* rest, size_t count) { state.WriteOut(rest, count); };
  WriteBuffered(state.buffer, data, size, limit, writeOut);
}

void TReplacingFile::Commit() {
  TState& state = *state_;
  if (state.done) state.Raise(ERROR_INVALID_HANDLE);
  state.done = true;
  state.inPlace ? state.WriteInPlace() : state.RenameIntoPlace();
}

}  // namespace quarda::platform
