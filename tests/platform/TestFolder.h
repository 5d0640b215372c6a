// A folder of its own for each test.
#pragma once

#include <TempFolder.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <string>

namespace quarda::platform {

class TTestFolder : public testing::Test {
 protected:
  std::filesystem::path Native(const std::string& name) const { return folder_.Native() / name; }
  /// The Windows path of a name in the folder.
  std::string Path(const std::string& name) const { return folder_.Path(name); }
  void Put(const std::string& name, const std::string& content = "old") const {
    folder_.Write(name, content);
  }
  std::string Content(const std::string& name) const { return folder_.Read(name); }
  size_t CountFiles() const {
    return static_cast<size_t>(
        std::distance(std::filesystem::directory_iterator(folder_.Native()), {}));
  }

 private:
  const TTempFolder folder_;
};

}  // namespace quarda::platform
