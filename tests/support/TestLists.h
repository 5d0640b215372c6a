// Short ways between string lists and the lines of a test.
#pragma once

#include <QDStringsAdapters.h>

#include <string>
#include <vector>

namespace quarda {

inline TRef<IStringList> ListOf(const std::vector<std::string>& lines) {
  auto list = NewStringListAdatper();
  for (const std::string& line : lines) list->Add(line);
  return list;
}

/// The lines, each followed by a "|".
inline std::string Joined(const TRef<IStringList>& list) {
  std::string text;
  for (int32_t i = 0; i < list->GetCount(); ++i) text += list->GetStrings(i).Str() + "|";
  return text;
}

}  // namespace quarda
