// A base folder for tests, and an application that knows only where it is.
#pragma once

#include <Files.h>
#include <QDConfig.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace quarda {

class TFolderApp final : public TRefCounted<IQuardaApp> {
 public:
  explicit TFolderApp(std::string path) : path_(std::move(path)) {}
  TRef<IConfig> QDCALL GetConfig() override { return {}; }
  int32_t QDCALL GetInstanceCount() override { return 0; }
  TRef<IQuardaInstance> QDCALL GetInstances(int32_t) override { return {}; }
  AnsiString QDCALL GetQuardaPath() override { return path_; }
  TRef<IPluginList> QDCALL GetPlugins() override { return {}; }
  int32_t QDCALL RunInstance(const AnsiString&) override { return 0; }

 private:
  const std::string path_;
};

class TConfigFolder {
 public:
  TConfigFolder() : app(MakeRef<TFolderApp>(platform::WindowsPath(native_.string()))) {
    std::filesystem::create_directories(native_ / "sub");
  }
  TConfigFolder(const TConfigFolder&) = delete;
  TConfigFolder& operator=(const TConfigFolder&) = delete;
  ~TConfigFolder() { std::filesystem::remove_all(native_); }

  std::string Base() const { return app->GetQuardaPath().Str(); }
  bool Exists(const char* name) const { return std::filesystem::exists(native_ / name); }
  void Write(const char* name, const std::string& content) const {
    std::ofstream(native_ / name, std::ios::binary) << content;
  }
  std::string Read(const char* name) const {
    std::ifstream file(native_ / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  TRef<IConfigFile> Open(const char* name = "a.ini") const {
    return TRef<IConfigFile>(MakeRef<TConfigFile>(name, app.Get()));
  }
  TRef<IConfig> OpenSettings() const {
    return TRef<IConfig>(MakeRef<TConfig>("Quarda.ini", app.Get()));
  }
  /// The settings file after it was opened and rebuilt.
  std::string Rebuilt(const std::string& before) const {
    Write("Quarda.ini", before);
    OpenSettings()->BuildConfigFile();
    return Read("Quarda.ini");
  }

 private:
  // Several builds may run the same test at the same time.
  const std::filesystem::path native_ = std::filesystem::temp_directory_path() /
                                        ("qd_config_" + std::to_string(std::random_device()()) +
                                         std::to_string(std::random_device()()));

 public:
  const TRef<TFolderApp> app;
};

/// The lines, each followed by a "|".
inline std::string Joined(const TRef<IStringList>& list) {
  std::string text;
  for (int32_t i = 0; i < list->GetCount(); ++i) text += list->GetStrings(i).Str() + "|";
  return text;
}

inline TRef<IStringList> ListOf(const std::vector<std::string>& lines) {
  auto list = NewStringListAdatper();
  for (const std::string& line : lines) list->Add(line);
  return list;
}

}  // namespace quarda
