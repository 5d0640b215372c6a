// The system's error codes and their texts.
#include "PlatformError.h"

#include "System.h"

namespace quarda::platform {
namespace {

DWORD Format(uint32_t code, DWORD language, char* text, DWORD size) {
  constexpr DWORD kFlags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS |
                           FORMAT_MESSAGE_MAX_WIDTH_MASK;  // no line breaks inside
  return ::FormatMessageA(kFlags, nullptr, code, language, text, size, nullptr);
}

}  // namespace

EPlatformError::EPlatformError(uint32_t code, std::string_view object)
    : std::runtime_error(ErrorText(code).append(": ").append(object)), code_(code) {}

uint32_t LastErrorCode() noexcept { return ::GetLastError(); }

// In English where the system has that: the log must read the same whatever the user's language is.
std::string ErrorText(uint32_t code) {
  constexpr DWORD kEnglish = MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US);
  char text[512];
  DWORD size = Format(code, kEnglish, text, sizeof text);
  if (size == 0) size = Format(code, 0, text, sizeof text);
  while (size > 0 && static_cast<unsigned char>(text[size - 1]) <= ' ') --size;
  return size > 0 ? std::string(text, size) : "Unknown error " + std::to_string(code);
}

}  // namespace quarda::platform
