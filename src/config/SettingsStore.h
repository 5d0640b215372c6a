// Settings read and written as the catalogue says.
#pragma once

#include <StringList.h>

#include <cstdint>
#include <string_view>

#include "ConfigFile.h"
#include "SettingsCatalogue.h"

namespace quarda {

/// Reads and writes the settings of an INI file that it borrows. No content of the file makes a
/// reading fail: what does not fit reads as the default.
class TSettingsStore {
 public:
  explicit TSettingsStore(TIniDocument& document) noexcept : document_(document) {}

  bool Boolean(TSettingName setting) const;
  int32_t Integer(TSettingName setting);
  uint32_t Unsigned(TSettingName setting) const;
  /// Valid until the content changes.
  std::string_view Text(TSettingName setting) const;
  /// The ordinal of the word.
  int32_t WordIndex(TSettingName setting) const;
  template <class TEnum>
  TEnum Word(TSettingName setting) const {
    return static_cast<TEnum>(WordIndex(setting));
  }
  TStringList List(TSettingName setting) const;

  void SetBoolean(TSettingName setting, bool value);
  void SetInteger(TSettingName setting, int32_t value);
  void SetUnsigned(TSettingName setting, uint32_t value);
  void SetText(TSettingName setting, std::string_view value);
  /// An ordinal without a word writes the default.
  void SetWord(TSettingName setting, int32_t ordinal);
  void SetList(TSettingName setting, const TStringList& items);

  /// Writes every setting with the value it reads now.
  void Rebuild();

 private:
  bool HasOlder(const TSetting& setting) const;
  void DropOlder(const TSetting& setting);
  void Rewrite(const TSetting& setting);

  TIniDocument& document_;
};

}  // namespace quarda
