// Open files.
#include <limits>
#include <utility>

#include "FileCalls.h"
#include "Files.h"
#include "Paths.h"
#include "PlatformError.h"

namespace quarda::platform {

using namespace win32;

namespace {

[[noreturn]] void Raise(std::string_view path) { throw EPlatformError(LastErrorCode(), path); }

HANDLE Open(const std::string& path, TOpenMode mode) {
  switch (mode) {
    case TOpenMode::kRead:
      return OpenFile(path, GENERIC_READ, OPEN_EXISTING);
    case TOpenMode::kReadShared:
      return OpenFile(path, GENERIC_READ, OPEN_EXISTING, FILE_SHARE_READ | FILE_SHARE_DELETE);
    case TOpenMode::kCreate:
      return OpenFile(path, GENERIC_WRITE, CREATE_ALWAYS);
    case TOpenMode::kCreateNew:
      return CreatePrivateFile(path);
    case TOpenMode::kUpdate:
      return OpenFile(path, GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING);
    case TOpenMode::kAppend:  // without the right to write anywhere else
      return OpenFile(path, FILE_APPEND_DATA | FILE_READ_ATTRIBUTES, OPEN_ALWAYS);
  }
  ::SetLastError(ERROR_INVALID_PARAMETER);
  return INVALID_HANDLE_VALUE;
}

HANDLE Handle(intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

constexpr intptr_t kNone = -1;

}  // namespace

TFile::TFile(std::string_view path, TOpenMode mode)
    : handle_(kNone), appends_(mode == TOpenMode::kAppend), path_(path) {
  const std::optional<std::string> name = SystemPath(path);
  if (name) handle_ = reinterpret_cast<intptr_t>(Open(*name, mode));
  if (handle_ == kNone) Raise(path_);
}

TFile::TFile(TFile&& other) noexcept
    : handle_(std::exchange(other.handle_, kNone)),
      appends_(other.appends_),
      path_(std::move(other.path_)) {}

TFile::~TFile() {
  if (handle_ != kNone) ::CloseHandle(Handle(handle_));
}

size_t TFile::Read(void* buffer, size_t size) {
  char* rest = static_cast<char*>(buffer);
  size_t done = 0;
  while (done < size) {
    DWORD count = 0;
    const auto wanted = static_cast<DWORD>(std::min(size - done, kLargestTransfer));
    if (!::ReadFile(Handle(handle_), rest + done, wanted, &count, nullptr)) Raise(path_);
    if (count == 0) break;
    done += count;
  }
  return done;
}

void TFile::Write(const void* data, size_t size) {
  const auto write = appends_ ? WriteOrTakeBack : WriteAll;
  if (!write(Handle(handle_), data, size)) Raise(path_);
}

void TFile::Seek(uint64_t offset) {
  if (!SeekFile(Handle(handle_), offset)) Raise(path_);
}

uint64_t TFile::Size() const {
  LARGE_INTEGER size{};
  if (!::GetFileSizeEx(Handle(handle_), &size)) Raise(path_);
  return static_cast<uint64_t>(size.QuadPart);
}

// The position stays where it was, as the other system has it.
void TFile::SetSize(uint64_t size) {
  LARGE_INTEGER before{};
  const bool known = ::SetFilePointerEx(Handle(handle_), {}, &before, FILE_CURRENT) != 0;
  if (!known || !ResizeFile(Handle(handle_), size) ||
      !SeekFile(Handle(handle_), static_cast<uint64_t>(before.QuadPart))) {
    Raise(path_);
  }
}

void TFile::Flush() {
  if (!::FlushFileBuffers(Handle(handle_))) Raise(path_);
}

}  // namespace quarda::platform
