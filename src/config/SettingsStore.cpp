#include "SettingsStore.h"

#include <Utils.h>

namespace quarda {
namespace {

constexpr std::string_view kSlash = "/";

}  // namespace

bool TSettingsStore::HasOlder(const TSetting& setting) const {
  return !setting.olderKey.empty() && document_.Exists(setting.olderSection, setting.olderKey);
}

void TSettingsStore::DropOlder(const TSetting& setting) {
  if (HasOlder(setting)) document_.DeleteValue(setting.olderSection, setting.olderKey);
}

bool TSettingsStore::Boolean(TSettingName setting) const {
  const auto number = document_.Integer(setting->section, setting->key);
  return number ? *number != 0 : setting->fallback == "1";
}

int32_t TSettingsStore::Integer(TSettingName setting) {
  const bool isOlder = !document_.Exists(setting->section, setting->key) && HasOlder(*setting);
  const auto number = isOlder ? document_.Integer(setting->olderSection, setting->olderKey)
                              : document_.Integer(setting->section, setting->key);
  const int32_t value = number ? *number : TryStrToInt(setting->fallback).value_or(0);
  if (value >= setting->smallest) return value;
  if (setting->correctsAtOnce) SetInteger(setting, setting->corrected);
  return setting->corrected;
}

uint32_t TSettingsStore::Unsigned(TSettingName setting) const {
  const auto number = document_.Unsigned(setting->section, setting->key);
  return number ? *number : static_cast<uint32_t>(TryStrToInt(setting->fallback).value_or(0));
}

std::string_view TSettingsStore::Text(TSettingName setting) const {
  std::string_view text =
      document_.Text(setting->section, setting->key).value_or(setting->fallback);
  if (setting->trimsOnRead) text = Trim(text);
  return text.empty() && setting->emptyReadsFallback ? setting->fallback : text;
}

int32_t TSettingsStore::WordIndex(TSettingName setting) const {
  if (HasOlder(*setting)) {
    return document_.Integer(setting->olderSection, setting->olderKey).value_or(0) != 0 ? 1 : 0;
  }
  const auto text = document_.Text(setting->section, setting->key).value_or(setting->fallback);
  const int32_t ordinal = CaseStringOf(Trim(text), setting->words);
  return ordinal >= 0 ? ordinal : CaseStringOf(setting->fallback, setting->words);
}

TStringList TSettingsStore::List(TSettingName setting) const {
  TStringList items;
  if (setting->form == TSettingForm::kSlashList) {
    items.SetSeparateText(
        document_.Text(setting->section, setting->key).value_or(setting->fallback), kSlash);
    items.EraseEmptyLines();
    return items;
  }
  items = document_.Ini().Section(setting->section);
  items.EraseEmptyLines();
  if (items.IsEmpty()) items.SetSeparateText(setting->fallback, kSlash);
  return items;
}

void TSettingsStore::SetBoolean(TSettingName setting, bool value) {
  document_.WriteBoolean(setting->section, setting->key, value);
}

void TSettingsStore::SetInteger(TSettingName setting, int32_t value) {
  document_.WriteInteger(setting->section, setting->key, value);
  DropOlder(*setting);
}

void TSettingsStore::SetUnsigned(TSettingName setting, uint32_t value) {
  document_.WriteUnsigned(setting->section, setting->key, value);
}

void TSettingsStore::SetText(TSettingName setting, std::string_view value) {
  if (value.empty() && setting->emptyWritesFallback) value = setting->fallback;
  document_.WriteText(setting->section, setting->key, setting->trimsOnWrite ? Trim(value) : value);
}

void TSettingsStore::SetWord(TSettingName setting, int32_t ordinal) {
  const bool isKnown = ordinal >= 0 && static_cast<size_t>(ordinal) < setting->words.size();
  DropOlder(*setting);
  document_.WriteText(setting->section, setting->key,
                      isKnown ? setting->words[static_cast<size_t>(ordinal)] : setting->fallback);
}

void TSettingsStore::SetList(TSettingName setting, const TStringList& items) {
  if (setting->form == TSettingForm::kSlashList) {
    document_.WriteText(setting->section, setting->key, items.SeparateText(kSlash));
  } else {
    document_.WriteSection(setting->section, items);
  }
}

void TSettingsStore::Rewrite(const TSetting& setting) {
  switch (setting.form) {
    case TSettingForm::kBoolean:
      return SetBoolean(setting, Boolean(setting));
    case TSettingForm::kInteger:
      return SetInteger(setting, Integer(setting));
    case TSettingForm::kUnsigned:
      return SetUnsigned(setting, Unsigned(setting));
    case TSettingForm::kText:
      return SetText(setting, Text(setting));
    case TSettingForm::kWord:
      return SetWord(setting, WordIndex(setting));
    case TSettingForm::kSlashList:
    case TSettingForm::kSection:
      return SetList(setting, List(setting));
  }
}

void TSettingsStore::Rebuild() {
  for (const TSetting& setting : catalogue::kSettings) {
    if (!setting.onDemand) Rewrite(setting);
  }
}

}  // namespace quarda
