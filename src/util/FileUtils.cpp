#include "FileUtils.h"

#include <CodePage.h>
#include <PlatformError.h>
#include <Shell.h>

#include <algorithm>
#include <limits>

#include "FileNames.h"

namespace quarda {
namespace {

constexpr std::string_view kBackupExtension = ".bak";

constexpr uint32_t Signature(char first, char second) noexcept {
  return static_cast<uint32_t>(static_cast<unsigned char>(first)) |
         static_cast<uint32_t>(static_cast<unsigned char>(second)) << 8;
}

bool HasExtension(std::string_view fileName, std::string_view extension) {
  return platform::SameAnsiText(ExtractFileExt(fileName), extension);
}

// A file that lost its name for a moment would lose it to the next engine that looks for a free
// one.
uint32_t AskShell(std::string_view fileName) {
  if (!HasExtension(fileName, ".inp")) return platform::ExecutableType(fileName);
  return platform::ExecutableType(fileName, ChangeFileExt(fileName, ".exe"));
}

/// Also where the disk holds the name in another letter case: removing the target would remove the
/// source.
bool IsSameFile(std::string_view a, std::string_view b) {
  return platform::SameAnsiText(platform::FullPath(a), platform::FullPath(b));
}

bool CopyAndRemove(std::string_view source, std::string_view dest) {
  if (!platform::DuplicateFile(source, dest)) return false;
  platform::ClearAttributes(source);
  platform::RemoveFile(source);
  return true;
}

}  // namespace

int32_t FileGetSize(std::string_view fileName) {
  const uint64_t largest = std::numeric_limits<int32_t>::max();
  return static_cast<int32_t>(std::min(FileGetInfo(fileName).size, largest));
}

platform::TFileRecord FileGetInfo(std::string_view fileName) {
  try {
    return platform::FindFile(fileName).value_or(platform::TFileRecord{});
  } catch (const platform::EPlatformError&) {  // a folder that may not be read holds no match
    return {};
  }
}

bool MoveFile(std::string_view source, std::string_view dest) {
  if (source.empty() || dest.empty() || !platform::FileExists(source)) return false;
  if (IsSameFile(source, dest)) return false;
  const std::string folder = ExtractFileDir(dest);
  if (!folder.empty()) platform::CreateFolders(folder);
  if (platform::FileExists(dest)) {
    platform::ClearAttributes(dest);
    platform::RemoveFile(dest);
  }
  const bool sameVolume = platform::SameAnsiText(PathRoot(source), PathRoot(dest));
  return (sameVolume && platform::RenameFile(source, dest)) || CopyAndRemove(source, dest);
}

void BackupFile(std::string_view fileName) {
  const std::string backup = ChangeFileExt(fileName, kBackupExtension);
  platform::RemoveFile(backup);
  if (platform::FileExists(fileName)) platform::RenameFile(fileName, backup);
}

void RestoreBackupFile(std::string_view fileName) {
  const std::string backup = ChangeFileExt(fileName, kBackupExtension);
  if (!platform::FileExists(backup)) return;
  platform::RemoveFile(fileName);
  platform::RenameFile(backup, fileName);
}

std::string GetTempDir() { return platform::TempFolder(); }

int32_t GetFileInfo(std::string_view fileName) {
  const uint32_t type = AskShell(fileName);
  if (HasExtension(fileName, ".pif")) return kDosProgram;
  if (type == 0) return kNoProgram;
  const uint32_t signature = type & 0xFFFF;
  if (signature == Signature('M', 'Z') || (signature & 0xFF) == 0) return kDosProgram;
  if (signature == Signature('P', 'E') && type >> 16 == 0) return kConsoleProgram;
  return kWindowsProgram;
}

}  // namespace quarda
