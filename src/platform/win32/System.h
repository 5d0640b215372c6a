// What the sources of this backend share: the system's header, handles that close themselves, and
// texts that the system writes into a buffer.
#pragma once

#include <windows.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

namespace quarda::platform::win32 {

/// A handle of the system, closed by the destructor. Both values by which the system says "none"
/// count as none.
class THandle {
 public:
  THandle() = default;
  explicit THandle(HANDLE handle) noexcept
      : handle_(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
  THandle(THandle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  THandle& operator=(THandle&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~THandle() {
    if (handle_ != nullptr) ::CloseHandle(handle_);
  }

  HANDLE Get() const noexcept { return handle_; }
  explicit operator bool() const noexcept { return handle_ != nullptr; }
  /// Closes now and says whether that went well.
  bool Close() noexcept { return ::CloseHandle(std::exchange(handle_, nullptr)) != 0; }

 private:
  HANDLE handle_ = nullptr;
};

/// The text that a call of the system writes: it takes a buffer and its size and returns the length
/// of the text, or, when the buffer is too small, its size or the one that is needed. Empty when
/// the call fails.
template <class Call>
std::string TextOf(Call&& call) {
  std::string text(MAX_PATH, '\0');
  while (true) {
    const DWORD size = call(text.data(), static_cast<DWORD>(text.size()));
    if (size < text.size()) {
      text.resize(size);
      return text;
    }
    text.resize(std::max<size_t>(size, 2 * text.size()));
  }
}

/// The module (library or program) that holds this code.
HMODULE ThisModule() noexcept;

/// While it lives the system raises no message box for this process, nor for one that it starts.
class TNoErrorBoxes {
 public:
  TNoErrorBoxes() noexcept
      : before_(::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX |
                               SEM_NOOPENFILEERRORBOX)) {}
  TNoErrorBoxes(const TNoErrorBoxes&) = delete;
  TNoErrorBoxes& operator=(const TNoErrorBoxes&) = delete;
  ~TNoErrorBoxes() { ::SetErrorMode(before_); }

 private:
  UINT before_;
};

}  // namespace quarda::platform::win32
