// A base folder for tests, and an application that knows only where it is.
#pragma once

#include <QDConfig.h>
#include <TempFolder.h>
#include <TestLists.h>

#include <string>
#include <utility>

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

class TConfigFolder : public TTempFolder {
 public:
  const TRef<TFolderApp> app = MakeRef<TFolderApp>(Path());

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
};

}  // namespace quarda
