// Scans with real settings.
#pragma once

#include <QDConfig.h>

#include <string_view>

#include "TestInstance.h"

namespace quarda {

/// A scan whose settings are the lines of an INI file.
inline TRef<TTestInstance> MakeScan(std::string_view settings) {
  const auto scan = MakeRef<TTestInstance>();
  scan->config = MakeRef<TConfig>(scan->folder.Path("Quarda.ini"), scan->app.Get());
  const TRef<IStringList> lines = scan->NewStringList();
  lines->SetText(settings);
  scan->config->SetLines(lines.Get());
  return scan;
}

}  // namespace quarda
