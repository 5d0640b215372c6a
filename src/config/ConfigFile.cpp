#include "ConfigFile.h"

#include <Files.h>
#include <PlatformError.h>
#include <Utils.h>

#include <charconv>
#include <exception>
#include <system_error>
#include <utility>

namespace quarda {
namespace {

std::string ResolveName(std::string_view name, IQuardaApp* app) {
  if (name.empty() || name.find(':') != std::string_view::npos || !app) return std::string(name);
  std::string path = app->GetQuardaPath().Str();
  if (!name.starts_with('\\')) path += '\\';
  return path.append(name);
}

}  // namespace

TIniDocument::TIniDocument(std::string_view fileName, IQuardaApp* app)
    : app_(app), fileName_(ResolveName(fileName, app)) {
  ReadAgain();
}

TIniDocument::~TIniDocument() {
  try {
    Save();
  } catch (const std::exception&) {  // nobody is left to hear of it
  }
}

std::optional<int32_t> TIniDocument::Integer(std::string_view section, std::string_view key) const {
  const auto text = ini_.Value(section, key);
  return text ? TryStrToIntOrHex(Trim(*text)) : std::nullopt;
}

std::optional<uint32_t> TIniDocument::Unsigned(std::string_view section,
                                               std::string_view key) const {
  if (const auto number = Integer(section, key)) return static_cast<uint32_t>(*number);
  const std::string_view text = Trim(ini_.Value(section, key).value_or(""));
  uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

void TIniDocument::Write(std::string_view section, std::string_view key, std::string_view text,
                         bool isSame) {
  modified_ = modified_ || !isSame;
  ini_.SetValue(section, key, text);
}

void TIniDocument::WriteText(std::string_view section, std::string_view key,
                             std::string_view value) {
  Write(section, key, value, Text(section, key) == value);
}

// A number that does not convert is compared as 0, a missing one with nothing.
void TIniDocument::WriteInteger(std::string_view section, std::string_view key, int32_t value) {
  Write(section, key, std::to_string(value),
        Exists(section, key) && Integer(section, key).value_or(0) == value);
}

void TIniDocument::WriteUnsigned(std::string_view section, std::string_view key, uint32_t value) {
  Write(section, key, std::to_string(value),
        Exists(section, key) && Unsigned(section, key).value_or(0) == value);
}

void TIniDocument::WriteBoolean(std::string_view section, std::string_view key, bool value) {
  Write(section, key, value ? "1" : "0",
        Exists(section, key) && (Integer(section, key).value_or(0) != 0) == value);
}

void TIniDocument::DeleteValue(std::string_view section, std::string_view key) {
  ini_.DeleteValue(section, key);
  modified_ = true;
}

void TIniDocument::DeleteSection(std::string_view section) {
  ini_.DeleteSection(section);
  modified_ = true;
}

void TIniDocument::WriteSection(std::string_view section, const TStringList& lines) {
  ini_.WriteSection(section, lines);
  modified_ = true;
}

void TIniDocument::Clear() {
  ini_.Clear();
  modified_ = true;
}

void TIniDocument::ReadAgain() {
  if (platform::FileExists(fileName_)) {
    ini_.SetText(platform::ReadWholeFile(fileName_));
  } else {
    ini_.Clear();
  }
}

void TIniDocument::Save() {
  if (modified_) SaveAlways();
}

void TIniDocument::SaveAlways() {
  platform::RewriteFileContent(fileName_, ini_.Text());
  modified_ = false;
}

void TIniDocument::DeleteFromDisk() {
  Clear();
  if (!platform::RemoveFile(fileName_)) {
    const uint32_t code = platform::LastErrorCode();
    if (platform::FileExists(fileName_)) throw platform::EPlatformError(code, fileName_);
  }
  modified_ = false;
}

}  // namespace quarda
