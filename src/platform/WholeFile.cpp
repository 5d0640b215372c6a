// Whole files in one call, the same on every system.
#include <stdexcept>

#include "Files.h"
#include "PlatformError.h"

namespace quarda::platform {

namespace {

bool WriteOverSame(std::string_view path, std::string_view content) {
  try {
    TFile file(path, TOpenMode::kUpdate);
    if (file.Size() != content.size()) return false;
    std::string present(content.size(), '\0');
    if (file.Read(present.data(), present.size()) != present.size() || present != content) {
      return false;
    }
    file.Seek(0);
    file.Write(content.data(), content.size());
    return true;
  } catch (const EPlatformError&) {  // replacing it will tell what is wrong, if anything is
    return false;
  }
}

}  // namespace

// The size is only a first guess: the file may grow, and some files of the system report none.
std::string ReadWholeFile(std::string_view path) {
  TFile file(path, TOpenMode::kRead);
  std::string content;
  const uint64_t expected = file.Size();
  if (expected >= content.max_size()) {
    throw std::length_error("File is too large for the memory: " + std::string(path));
  }
  size_t size = 0;
  size_t wanted = static_cast<size_t>(expected) + 1;
  while (true) {
    content.resize(size + wanted);
    const size_t count = file.Read(content.data() + size, wanted);
    size += count;
    if (count < wanted) break;
    wanted = size;
  }
  content.resize(size);
  return content;
}

void ReplaceFileContent(std::string_view path, std::string_view content, TDurability durability) {
  TReplacingFile file(path, durability);
  file.Write(content.data(), content.size());
  file.Commit();
}

void RewriteFileContent(std::string_view path, std::string_view content) {
  if (!WriteOverSame(path, content)) ReplaceFileContent(path, content);
}

}  // namespace quarda::platform
