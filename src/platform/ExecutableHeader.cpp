#include "ExecutableHeader.h"

#include "CodePage.h"

namespace quarda::platform {
namespace {

constexpr uint32_t kSegmented = 'N' | 'E' << 8;
constexpr uint32_t kPortable = 'P' | 'E' << 8;

/// The little-endian word there; 0 behind the end.
uint32_t WordAt(std::string_view bytes, size_t at) noexcept {
  if (at >= bytes.size() || bytes.size() - at < 2) return 0;
  return static_cast<uint32_t>(static_cast<unsigned char>(bytes[at]) |
                               static_cast<unsigned char>(bytes[at + 1]) << 8);
}

uint32_t WithVersion(uint32_t type, uint32_t major, uint32_t minor) noexcept {
  return type | (major & 0xFF) << 24 | (minor & 0xFF) << 16;
}

/// The version counts only for programs of the graphical shell; one that names none is taken for
/// the first that ran such programs.
uint32_t PortableType(std::string_view header) noexcept {
  constexpr size_t kOptional = 24;  // behind signature and file header
  constexpr uint32_t kGraphical = 2;
  if (WordAt(header, kOptional + 68) != kGraphical) return kPortable;
  const uint32_t major = WordAt(header, kOptional + 48);
  const uint32_t minor = WordAt(header, kOptional + 50);
  const uint32_t type = WithVersion(kPortable, major, minor);
  return type != kPortable ? type : WithVersion(kPortable, 4, 0);
}

uint32_t SegmentedType(std::string_view header) noexcept {
  constexpr uint32_t kForWindows = 2;
  if ((WordAt(header, 0x36) & 0xFF) != kForWindows) return kSegmented;
  const uint32_t version = WordAt(header, 0x3E);
  return version != 0 ? kSegmented | version << 16 : WithVersion(kSegmented, 3, 0);
}

}  // namespace

TProgramKind ProgramKindOf(std::string_view fileName) noexcept {
  constexpr struct {
    std::string_view extension;
    TProgramKind kind;
  } kKinds[] = {{".exe", TProgramKind::kImage},   {".scr", TProgramKind::kImage},
                {".com", TProgramKind::kCommand}, {".bat", TProgramKind::kCommand},
                {".cmd", TProgramKind::kCommand}, {".pif", TProgramKind::kCommand}};
  const std::string_view name = fileName.substr(fileName.find_last_of("\\/:") + 1);
  const size_t dot = name.rfind('.');
  if (dot == std::string_view::npos) return TProgramKind::kNone;
  for (const auto& row : kKinds) {
    if (SameAnsiText(name.substr(dot), row.extension)) return row.kind;
  }
  return TProgramKind::kNone;
}

std::optional<uint32_t> NewHeaderOffset(std::string_view start) noexcept {
  if (!start.starts_with("MZ")) return std::nullopt;
  if (start.size() < kOldHeaderSize) return 0;
  return WordAt(start, 0x3C) | WordAt(start, 0x3E) << 16;
}

uint32_t ExecutableTypeOf(std::string_view newHeader) noexcept {
  if (newHeader.starts_with(std::string_view("PE\0\0", 4))) return PortableType(newHeader);
  if (newHeader.starts_with("NE")) return SegmentedType(newHeader);
  return kDosProgram;
}

}  // namespace quarda::platform
