// Scans with real settings.
#pragma once

#include <QDConfig.h>

#include <string_view>

#include "TestInstance.h"

namespace quarda {

inline TRef<IStringList> LinesOf(std::string_view text) {
  const TRef<IStringList> lines = NewStringListAdatper();
  lines->SetText(text);
  return lines;
}

/// A scan whose settings are the lines of an INI file.
inline TRef<TTestInstance> MakeScan(std::string_view settings) {
  const auto scan = MakeRef<TTestInstance>();
  scan->config = MakeRef<TConfig>(scan->folder.Path("Quarda.ini"), scan->app.Get());
  scan->config->SetLines(LinesOf(settings).Get());
  return scan;
}

}  // namespace quarda
