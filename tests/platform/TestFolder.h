// A folder of its own for each test.
#pragma once

#include <Files.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace quarda::platform {

class TTestFolder : public testing::Test {
 protected:
  TTestFolder() {
    const auto* info = testing::UnitTest::GetInstance()->current_test_info();
    native_ = std::filesystem::temp_directory_path() /
              (std::string("qd_platform_") + info->test_suite_name() + info->name());
    Clean();
    std::filesystem::create_directories(native_);
  }
  ~TTestFolder() override { Clean(); }

  std::filesystem::path Native(const std::string& name) const { return native_ / name; }
  /// The Windows path of a name in the folder.
  std::string Path(const std::string& name) const {
    return WindowsPath(native_.string()) + "\\" + name;
  }
  void Put(const std::string& name, const std::string& content = "old") const {
    std::filesystem::create_directories(Native(name).parent_path());
    std::ofstream(Native(name), std::ios::binary) << content;
  }
  std::string Content(const std::string& name) const {
    std::ifstream file(Native(name), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
  }
  size_t CountFiles() const {
    return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(native_), {}));
  }

 private:
  void Clean() const {
    std::error_code ignored;
    std::filesystem::remove_all(native_, ignored);
  }

  std::filesystem::path native_;
};

}  // namespace quarda::platform
