#include "PluginLoadPlugins.h"

#include <string>
#include <string_view>

#include "PatternList.h"

namespace quarda {
namespace {

// A line with a drive is a full path, any other lies below the base folder.
std::string LibraryPath(const std::string& line, std::string_view baseFolder) {
  if (line.find(':') != line.npos) return line;
  return std::string(baseFolder) + (line.starts_with('\\') ? "" : "\\") + line;
}

}  // namespace

bool TPluginLoadPlugins::Init(IQuardaInstance* instance) {
  const AnsiString baseFolder = instance->GetQuardaPath();
  const TRef<IPluginList> plugins = instance->GetPlugins();
  for (const std::string& line : LinesOf(instance->GetConfig()->GetPluginList().Get())) {
    plugins->LoadPlugin(LibraryPath(line, baseFolder));
  }
  return false;
}

}  // namespace quarda
