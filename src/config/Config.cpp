#include "Config.h"

#include <Files.h>

namespace quarda {

TConfig::TConfig(std::string_view fileName, IQuardaApp* app)
    : TConfigFileBase(fileName, app), settings_(document_) {
  if (!platform::FileExists(document_.FileName())) TConfig::BuildConfigFile();
}

void TConfig::BuildConfigFile() {
  settings_.Rebuild();
  document_.SaveAlways();
}

TRef<IConfigFile> TConfig::OpenConfigFile(const AnsiString& fileName) {
  return MakeRef<TConfigFile>(fileName, document_.App());
}

}  // namespace quarda
