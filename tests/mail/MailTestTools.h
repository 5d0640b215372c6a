// What the tests of the mail model share.
#pragma once

#include <Files.h>
#include <Streams.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace quarda {

/// A folder that is gone when the test ends.
class TTestFolder {
 public:
  TTestFolder()
      : path_(std::filesystem::temp_directory_path() /
              ("mailtest" + std::to_string(reinterpret_cast<uintptr_t>(this)))) {
    std::filesystem::create_directories(path_);
  }
  TTestFolder(const TTestFolder&) = delete;
  TTestFolder& operator=(const TTestFolder&) = delete;
  ~TTestFolder() { std::filesystem::remove_all(path_); }

  std::string File(std::string_view name) const {
    return platform::WindowsPath((path_ / name).string());
  }

 private:
  std::filesystem::path path_;
};

/// Calls `use` with the text as a memory, a string and a file stream; the last one is read in
/// blocks.
template <class Use>
void ForEachKindOfStream(std::string_view text, Use use) {
  {
    SCOPED_TRACE("memory");
    TMemoryStream stream(text);
    use(stream);
  }
  {
    SCOPED_TRACE("string");
    std::string copy(text);
    TStringStream stream(copy);
    use(stream);
  }
  {
    SCOPED_TRACE("file");
    const TTestFolder folder;
    platform::ReplaceFileContent(folder.File("text"), text);
    TFileStream stream(folder.File("text"), platform::TOpenMode::kRead);
    use(stream);
  }
}

}  // namespace quarda
