// A folder of its own for a test.
#pragma once

#include <Files.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <string>

namespace quarda {

/// Gone with everything in it when the test ends. Paths are given in the Windows form.
class TTempFolder {
 public:
  TTempFolder() {
    const auto base = std::filesystem::temp_directory_path();
    for (int i = 0; folder_.empty(); ++i) {
      const auto folder = base / ("quarda-test-" + std::to_string(i));
      if (std::filesystem::create_directory(folder)) folder_ = folder;
    }
  }
  TTempFolder(const TTempFolder&) = delete;
  TTempFolder& operator=(const TTempFolder&) = delete;
  ~TTempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }

  const std::filesystem::path& Native() const { return folder_; }
  std::string Path(const std::string& name) const {
    return platform::WindowsPath((folder_ / name).string());
  }
  std::string Write(const std::string& name, std::string_view content) const {
    std::ofstream(folder_ / name, std::ios::binary) << content;
    return Path(name);
  }

 private:
  std::filesystem::path folder_;
};

}  // namespace quarda
