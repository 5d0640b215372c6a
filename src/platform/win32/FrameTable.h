// How errors find their way through modules of 32 bits. There the compiler's run-time library goes
// up the stack by tables, and each module tells the one that is linked into it about its own code
// and no other: an error that leaves a module, or passes through one, would end the process. So the
// engine is told about each plug-in that it loads, and a plug-in about the engine.
//
// On 64 bits the system itself knows the tables of every module.
//
// This header is part of the SDK as well, and stands for itself.
#pragma once

#include <unwind.h>
#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

// NOLINTBEGIN(bugprone-reserved-identifier): the names are the run-time library's
extern "C" void __register_frame(void* table);
extern "C" void __deregister_frame(void* table);
// NOLINTEND(bugprone-reserved-identifier)

namespace quarda::platform::win32 {

inline constexpr bool kGoesByFrameTables = sizeof(void*) == 4;

/// Whether these bytes are a table: its first record describes others, and records without a gap
/// lead to the end mark.
inline bool IsFrameTable(const char* bytes, size_t size) noexcept {
  constexpr size_t kShortest = 16;
  const auto number = [bytes](size_t at) {
    uint32_t value = 0;
    std::memcpy(&value, bytes + at, sizeof value);
    return value;
  };
  if (size < kShortest || number(4) != 0 || bytes[8] != 1 || bytes[9] != 'z') return false;
  size_t at = 0;
  while (size - at >= 4 && number(at) != 0) {
    const size_t length = number(at);
    if (length > size - at - 4) return false;
    at += 4 + length;
  }
  return at > 0 && size - at >= 4;
}

/// The table of a loaded module; null when it has none, as with other compilers.
inline void* FrameTableOf(HMODULE module) noexcept {
  constexpr DWORD kKind = IMAGE_SCN_CNT_INITIALIZED_DATA | IMAGE_SCN_MEM_READ |
                          IMAGE_SCN_MEM_WRITE | IMAGE_SCN_MEM_EXECUTE | IMAGE_SCN_MEM_DISCARDABLE;
  constexpr DWORD kReadOnly = IMAGE_SCN_CNT_INITIALIZED_DATA | IMAGE_SCN_MEM_READ;
  char* const image = reinterpret_cast<char*>(module);
  const auto* const start = reinterpret_cast<const IMAGE_DOS_HEADER*>(image);
  const auto* const header = reinterpret_cast<const IMAGE_NT_HEADERS*>(image + start->e_lfanew);
  const IMAGE_SECTION_HEADER* const sections = IMAGE_FIRST_SECTION(header);
  for (size_t i = 0; i < header->FileHeader.NumberOfSections; ++i) {
    const IMAGE_SECTION_HEADER& section = sections[i];
    // The name is too long for the field: either cut off, or a number in its place.
    const bool named = section.Name[0] == '/' || std::memcmp(section.Name, ".eh_fram", 8) == 0;
    char* const bytes = image + section.VirtualAddress;
    if (named && (section.Characteristics & kKind) == kReadOnly &&
        IsFrameTable(bytes, section.Misc.VirtualSize)) {
      return bytes;
    }
  }
  return nullptr;
}

/// Tells the run-time library of this module about the code of another one, and has it get ready:
/// an error from there enters the handlers here with its help, and one that was never used ends the
/// process then.
inline void LearnFrames(HMODULE module) noexcept {
  if constexpr (kGoesByFrameTables) {
    void* const table = FrameTableOf(module);
    if (table == nullptr) return;
    __register_frame(table);
    _Unwind_Backtrace([](_Unwind_Context*, void*) { return _URC_NORMAL_STOP; }, nullptr);
  }
}

/// Takes that back, while the other one is still loaded.
inline void ForgetFrames(HMODULE module) noexcept {
  if constexpr (kGoesByFrameTables) {
    if (void* const table = FrameTableOf(module)) __deregister_frame(table);
  }
}

}  // namespace quarda::platform::win32
