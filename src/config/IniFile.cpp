// Sections form a linked list with a hash of their names, so that adding, finding and deleting one
// costs the same in a file of a hundred thousand. Lines are slices of the text that was read. Keys
// are searched for in small sections and hashed in large ones. A deleted line is emptied first
// (no stored line is empty) and taken out when half of the lines are gone.
#include "IniFile.h"

#include <CodePage.h>
#include <Utils.h>

#include <cstring>
#include <utility>

namespace quarda {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

std::optional<std::string_view> KeyOf(std::string_view line) noexcept {
  const size_t equals = line.find('=');
  if (equals == std::string_view::npos) return std::nullopt;
  return Trim(line.substr(0, equals));
}

// In the layout "key = value" the blanks behind the "=" belong to the layout, in "key= value" to
// the value: so it is read back as it was written.
std::string_view ValueOf(std::string_view line) noexcept {
  const size_t equals = line.find('=');
  const std::string_view value = line.substr(equals + 1);
  const bool isSpaced = equals > 0 && static_cast<unsigned char>(line[equals - 1]) <= ' ';
  return isSpaced ? TrimLeft(value) : value;
}

// Tells most lines of other keys by their first character.
bool MayHaveKey(std::string_view line, std::string_view key) noexcept {
  if (line.size() <= key.size()) return false;
  return key.empty() || static_cast<unsigned char>(line.front()) <= ' ' ||
         platform::LowerAnsi(line.front()) == platform::LowerAnsi(key.front());
}

// The name in a header line.
std::optional<std::string_view> HeaderName(std::string_view trimmed) noexcept {
  if (trimmed.size() < 2 || trimmed.front() != '[' || trimmed.back() != ']') return std::nullopt;
  return Trim(trimmed.substr(1, trimmed.size() - 2));
}

bool IsDropped(std::string_view trimmed) noexcept {
  return trimmed.empty() || trimmed.front() == ';';
}

}  // namespace

// ---- TIniSection

void TIniSection::Append(std::string_view line, const TTextBlock& block) {
  if (block) {
    lines_.Keep(block);
    lines_.AddSlice(line);
  } else {
    lines_.Add(line);
  }
  if (indexed_) IndexLine(lines_.Count() - 1);
}

void TIniSection::IndexLine(size_t line) const {
  const auto key = KeyOf(lines_[line]);
  if (key && !index_.try_emplace(platform::LowerAnsi(*key), line).second) repeatedKeys_ = true;
}

void TIniSection::BuildIndex() const {
  index_.reserve(lines_.Count());
  for (size_t i = 0; i < lines_.Count(); ++i) IndexLine(i);
  indexed_ = true;
}

void TIniSection::DropIndex() const {
  index_.clear();
  indexed_ = false;
  repeatedKeys_ = false;
}

size_t TIniSection::Find(std::string_view key) const {
  if (lines_.Count() > kScanned) {
    if (!indexed_) BuildIndex();
    const auto found = index_.find(platform::LowerAnsi(key));
    return found == index_.end() ? kNone : found->second;
  }
  for (size_t i = 0; i < lines_.Count(); ++i) {
    if (!MayHaveKey(lines_[i], key)) continue;
    const auto other = KeyOf(lines_[i]);
    if (other && platform::SameAnsiText(*other, key)) return i;
  }
  return kNone;
}

std::optional<std::string_view> TIniSection::Value(std::string_view key) const {
  const size_t found = Find(key);
  if (found == kNone) return std::nullopt;
  return ValueOf(lines_[found]);
}

void TIniSection::SetValue(std::string_view key, std::string_view line) {
  const size_t found = Find(key);
  if (found == kNone) {
    Append(line, {});
  } else if (lines_[found] != line) {
    lines_.SetLine(found, line);
  }
}

void TIniSection::DeleteValue(std::string_view key) {
  const size_t first = Find(key);
  if (first == kNone) return;
  const size_t last = indexed_ && !repeatedKeys_ ? first : lines_.Count() - 1;
  for (size_t i = first; i <= last; ++i) {
    const auto other = KeyOf(lines_[i]);
    if (!other || !platform::SameAnsiText(*other, key)) continue;
    lines_.SetLine(i, {});
    ++deleted_;
  }
  if (indexed_) index_.erase(platform::LowerAnsi(key));
  if (deleted_ * 2 > lines_.Count()) {
    lines_.EraseEmptyLines();
    deleted_ = 0;
    DropIndex();
  }
}

TStringList TIniSection::Lines() const {
  TStringList lines(lines_);
  if (deleted_ > 0) lines.EraseEmptyLines();
  return lines;
}

// ---- TIniFile

void TIniFile::Clear() noexcept {
  lastFound_ = nullptr;
  index_.clear();
  sections_.clear();
  readsDifferently_ = false;
}

TIniSection* TIniFile::ReadLine(std::string_view line, const TTextBlock& block,
                                TIniSection* current) {
  const std::string_view trimmed = Trim(line);
  if (IsDropped(trimmed)) return current;
  if (const auto name = HeaderName(trimmed)) return &FindOrAdd(*name);
  if (current) current->Append(line, block);
  return current;
}

void TIniFile::ReadLines(const TStringList& lines, const TTextBlock& block, TIniSection* current) {
  for (size_t i = 0; i < lines.Count(); ++i) current = ReadLine(lines[i], block, current);
}

void TIniFile::SetText(std::string_view text) {
  if (text.starts_with(kUtf8Mark)) text.remove_prefix(kUtf8Mark.size());
  TTextBlock block(text.size());
  if (!text.empty()) std::memcpy(block.Data(), text.data(), text.size());
  TStringList lines;
  lines.SetText(block);
  Clear();
  ReadLines(lines, block, nullptr);
}

void TIniFile::SetLines(const TStringList& lines) {
  Clear();
  ReadLines(lines, {}, nullptr);
}

template <class TEmit>
void TIniFile::ForEachLine(TEmit emit) const {
  std::string header;
  for (const TIniSection& section : sections_) {
    header.assign("[").append(section.Name()).append("]");
    emit(header);
    section.ForEachLine(emit);
    emit("");
  }
}

std::string TIniFile::Text() const {
  size_t size = 0;
  ForEachLine([&size](std::string_view line) { size += line.size() + 2; });
  std::string text;
  text.reserve(size);
  ForEachLine([&text](std::string_view line) { text.append(line).append("\r\n"); });
  return text;
}

TStringList TIniFile::Lines() const {
  TStringList lines;
  ForEachLine([&lines](std::string_view line) { lines.Add(line); });
  return lines;
}

const TIniSection* TIniFile::Find(std::string_view section) const {
  section = Trim(section);
  if (lastFound_ && platform::SameAnsiText(lastFound_->Name(), section)) return lastFound_;
  const auto found = index_.find(platform::LowerAnsi(section));
  if (found == index_.end()) return nullptr;
  lastFound_ = &*found->second;
  return lastFound_;
}

TIniSection* TIniFile::Find(std::string_view section) {
  return const_cast<TIniSection*>(std::as_const(*this).Find(section));
}

TIniSection& TIniFile::FindOrAdd(std::string_view section) {
  if (TIniSection* const found = Find(section)) return *found;
  const std::string_view name = Trim(section);
  const auto added = sections_.emplace(sections_.end(), name);
  index_.emplace(platform::LowerAnsi(name), added);
  return *added;
}

bool TIniFile::HasSection(std::string_view section) const { return Find(section) != nullptr; }

TStringList TIniFile::SectionNames() const {
  TStringList names;
  for (const TIniSection& section : sections_) names.Add(section.Name());
  return names;
}

std::optional<std::string_view> TIniFile::Value(std::string_view section,
                                                std::string_view key) const {
  const TIniSection* const found = Find(section);
  return found ? found->Value(Trim(key)) : std::nullopt;
}

void TIniFile::SetValue(std::string_view section, std::string_view key, std::string_view value) {
  key = Trim(key);
  std::string line;
  line.reserve(key.size() + 1 + value.size());
  line.append(key).append("=").append(value);
  const std::string_view trimmed = Trim(line);
  if (IsDropped(trimmed) || HeaderName(trimmed)) readsDifferently_ = true;
  FindOrAdd(section).SetValue(key, line);
}

void TIniFile::DeleteValue(std::string_view section, std::string_view key) {
  if (TIniSection* const found = Find(section)) found->DeleteValue(Trim(key));
}

TStringList TIniFile::Section(std::string_view section) const {
  const TIniSection* const found = Find(section);
  return found ? found->Lines() : TStringList();
}

void TIniFile::DeleteSection(std::string_view section) {
  const auto found = index_.find(platform::LowerAnsi(Trim(section)));
  if (found == index_.end()) return;
  lastFound_ = nullptr;
  sections_.erase(found->second);
  index_.erase(found);
}

void TIniFile::WriteSection(std::string_view section, const TStringList& lines) {
  DeleteSection(section);
  // The rest of the content goes through the form of the file as well; only when it would change
  // by that is it really done.
  if (readsDifferently_) SetLines(Lines());
  ReadLines(lines, {}, &FindOrAdd(section));
}

}  // namespace quarda
