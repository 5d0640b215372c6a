// INI content of any kind: what was read and written reads the same again, every setting has a
// value, and rebuilding comes to rest.
#include <ConfigFile.h>
#include <IniFile.h>
#include <SettingsStore.h>

#include <string>

#include "Fuzz.h"

namespace {

using quarda::fuzz::Require;

std::string Rebuild(const std::string& text) {
  quarda::TIniDocument document("", nullptr);
  quarda::TIniFile ini;
  ini.SetText(text);
  document.SetLines(ini.Lines());
  quarda::TSettingsStore(document).Rebuild();
  return document.Ini().Text();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  quarda::TIniFile ini;
  ini.SetText(quarda::fuzz::AsText(data, size));
  const std::string text = ini.Text();
  quarda::TIniFile again;
  again.SetText(text);
  Require(again.Text() == text, "writing and reading changes nothing");
  const auto names = ini.SectionNames();
  for (size_t i = 0; i < names.Count(); ++i) {
    const auto lines = ini.Section(names[i]);
    for (size_t k = 0; k < lines.Count(); ++k) {
      const size_t equals = lines[k].find('=');
      if (equals == std::string_view::npos) continue;
      Require(ini.Value(names[i], lines[k].substr(0, equals)).has_value(), "keys are found");
    }
  }
  // The first pass may bring sections of lines before new ones; the second moves them.
  const std::string twice = Rebuild(Rebuild(text));
  Require(Rebuild(twice) == twice, "a rebuilt file stays");
  return 0;
}
