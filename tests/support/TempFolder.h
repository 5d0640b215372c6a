// A folder of its own for a test.
#pragma once

#include <Files.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace quarda {

/// Gone with everything in it when the test ends. Names are those of this system, paths are given
/// in the Windows form.
class TTempFolder {
 public:
  TTempFolder() {
    const auto base = std::filesystem::temp_directory_path();
    for (int i = 0; folder_.empty(); ++i) {  // other tests run at the same time
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
  std::string Path() const { return platform::WindowsPath(folder_.string()); }
  std::string Path(std::string_view name) const { return Path().append("\\").append(name); }
  bool Exists(std::string_view name) const { return std::filesystem::exists(folder_ / name); }
  /// Writes a file, and the folders on the way to it; returns its path.
  std::string Write(std::string_view name, std::string_view content) const {
    std::filesystem::create_directories((folder_ / name).parent_path());
    std::ofstream(folder_ / name, std::ios::binary) << content;
    return Path(name);
  }
  /// The content of a file; empty when there is none.
  std::string Read(std::string_view name) const {
    std::ifstream file(folder_ / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  std::filesystem::path folder_;
};

}  // namespace quarda
