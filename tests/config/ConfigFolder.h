// A base folder for tests, and the settings in it.
#pragma once

#include <QDConfig.h>
#include <TempFolder.h>
#include <TestApp.h>
#include <TestLists.h>

#include <string>

namespace quarda {

class TConfigFolder : public TTempFolder {
 public:
  const TRef<TTestAppBase> app = MakeRef<TTestAppBase>(Path());

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
