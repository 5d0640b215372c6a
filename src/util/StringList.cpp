// Lines are slices of shared blocks. New text goes into an arena block that grows by doubling, so a
// line costs no allocation of its own; when most of what was stored is dead (lines replaced over
// and over), the live text is copied into one new block, which keeps the cost per stored byte
// constant.
#include "StringList.h"

#include <CodePage.h>
#include <Files.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "Errors.h"

namespace quarda {
namespace {

constexpr size_t kFirstArena = 256;
constexpr size_t kLargestArena = 1 << 20;

bool IsBlank(std::string_view line) {
  return std::ranges::all_of(line, [](char c) { return static_cast<unsigned char>(c) <= ' '; });
}

std::string_view NameOf(std::string_view line) {
  const size_t equals = line.find('=');
  return equals == std::string_view::npos ? std::string_view() : line.substr(0, equals);
}

}  // namespace

void TStringList::RaiseIndex(size_t index) { RaiseListIndex(static_cast<ptrdiff_t>(index)); }

void TStringList::SwapLines(TStringList& other) noexcept {
  std::swap(lines_, other.lines_);
  std::swap(blocks_, other.blocks_);
  std::swap(arena_, other.arena_);
  std::swap(arenaUsed_, other.arenaUsed_);
  std::swap(stored_, other.stored_);
  std::swap(compactAt_, other.compactAt_);
}

TStringList& TStringList::operator=(TStringList&& other) noexcept {
  if (this != &other) {
    DropLines();
    SwapLines(other);
    Changed();
  }
  return *this;
}

void TStringList::Changed() {
  wasChanged_ = true;
  if (updates_ > 0) {
    changedInUpdate_ = true;
  } else if (observer_) {
    observer_->StringListChanged();
  }
}

void TStringList::EndUpdate() {
  if (--updates_ == 0 && std::exchange(changedInUpdate_, false)) Changed();
}

void TStringList::DropLines() noexcept {
  lines_.clear();
  blocks_.clear();
  arena_ = {};
  arenaUsed_ = 0;
  stored_ = 0;
  compactAt_ = kCompactAt;
}

void TStringList::Keep(const TTextBlock& block) {
  if (block && (blocks_.empty() || !(blocks_.back() == block))) blocks_.push_back(block);
}

char* TStringList::Allocate(size_t size) {
  if (arena_.Size() - arenaUsed_ < size) {
    const size_t grown = std::clamp(arena_.Size() * 2, kFirstArena, kLargestArena);
    TTextBlock block(std::max(grown, size));
    blocks_.push_back(block);
    arena_ = std::move(block);
    arenaUsed_ = 0;
  }
  char* place = arena_.Data() + arenaUsed_;
  arenaUsed_ += size;
  stored_ += size;
  return place;
}

TStringList::TLine TStringList::Store(std::string_view text) {
  if (text.empty()) return {"", 0};
  char* place = Allocate(text.size());
  std::memcpy(place, text.data(), text.size());
  return {place, text.size()};
}

void TStringList::CompactIfWasteful() {
  if (stored_ < compactAt_) return;
  size_t live = 0;
  for (const TLine& line : lines_) live += line.size;
  if (live < stored_ / 2) {
    TTextBlock block(live);
    char* place = block.Data();
    for (TLine& line : lines_) {
      std::memcpy(place, line.data, line.size);
      line.data = place;
      place += line.size;
    }
    blocks_.assign(1, block);
    arena_ = {};
    arenaUsed_ = 0;
    stored_ = live;
  }
  compactAt_ = std::max(kCompactAt, stored_ * 2);
}

void TStringList::SetLine(size_t index, std::string_view text) {
  CheckIndex(index);
  lines_[index] = Store(text);
  CompactIfWasteful();
  Changed();
}

size_t TStringList::Add(std::string_view text) {
  lines_.push_back(Store(text));
  Changed();
  return lines_.size() - 1;
}

void TStringList::Insert(size_t index, std::string_view text) {
  if (index > lines_.size()) RaiseIndex(index);
  lines_.insert(lines_.begin() + static_cast<ptrdiff_t>(index), Store(text));
  Changed();
}

void TStringList::Delete(size_t index) {
  CheckIndex(index);
  lines_.erase(lines_.begin() + static_cast<ptrdiff_t>(index));
  CompactIfWasteful();
  Changed();
}

void TStringList::Clear() {
  if (lines_.empty()) return;
  DropLines();
  Changed();
}

std::string_view TStringList::Name(size_t index) const { return NameOf(Line(index)); }

std::string_view TStringList::Value(std::string_view name) const {
  const ptrdiff_t index = IndexOfName(name);
  if (index < 0) return {};
  return (*this)[static_cast<size_t>(index)].substr(name.size() + 1);
}

void TStringList::SetValue(std::string_view name, std::string_view value) {
  const ptrdiff_t index = IndexOfName(name);
  if (value.empty()) {
    if (index >= 0) Delete(static_cast<size_t>(index));
    return;
  }
  std::string line;
  line.reserve(name.size() + 1 + value.size());
  line.append(name).append("=").append(value);
  if (index < 0) {
    Add(line);
  } else {
    SetLine(static_cast<size_t>(index), line);
  }
}

ptrdiff_t TStringList::IndexOf(std::string_view line) const noexcept {
  for (size_t i = 0; i < lines_.size(); ++i) {
    if (lines_[i].size == line.size() && platform::SameAnsiText(View(lines_[i]), line)) {
      return static_cast<ptrdiff_t>(i);
    }
  }
  return -1;
}

ptrdiff_t TStringList::IndexOfName(std::string_view name) const noexcept {
  for (size_t i = 0; i < lines_.size(); ++i) {
    const std::string_view line = View(lines_[i]);
    // The name may hold no "=" itself, so the first one must stand right behind it.
    if (line.size() > name.size() && line[name.size()] == '=' &&
        platform::SameAnsiText(line.substr(0, name.size()), name) &&
        name.find('=') == std::string_view::npos) {
      return static_cast<ptrdiff_t>(i);
    }
  }
  return -1;
}

std::string TStringList::Text() const {
  size_t size = 0;
  for (const TLine& line : lines_) size += line.size + 2;
  std::string text;
  text.reserve(size);
  for (const TLine& line : lines_) text.append(line.data, line.size).append("\r\n");
  return text;
}

void TStringList::AddSlices(std::string_view text) {
  const auto find = [](const char* from, const char* to, char c) {
    return static_cast<const char*>(std::memchr(from, c, static_cast<size_t>(to - from)));
  };
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at < end) {
    const char* lf = find(at, end, '\n');
    const bool hasLf = lf != nullptr;
    if (!hasLf) lf = end;
    const char* cr = find(at, lf, '\r');
    while (cr && !(hasLf && cr + 1 == lf)) {  // lone CRs before the LF
      AddSlice({at, static_cast<size_t>(cr - at)});
      at = cr + 1;
      cr = find(at, lf, '\r');
    }
    const char* const lineEnd = cr ? cr : lf;
    if (hasLf || at < end) AddSlice({at, static_cast<size_t>(lineEnd - at)});
    at = hasLf ? lf + 1 : end;
  }
}

void TStringList::SetText(TTextBlock block) {
  DropLines();
  Keep(block);
  AddSlices(block.View());
  Changed();
}

void TStringList::SetText(std::string_view text) {
  TTextBlock block(text.size());
  if (!text.empty()) std::memcpy(block.Data(), text.data(), text.size());
  SetText(std::move(block));
}

std::string TStringList::SeparateText(std::string_view separator) const {
  size_t size = 0;
  for (const TLine& line : lines_) size += line.size + separator.size();
  std::string text;
  text.reserve(size);
  for (size_t i = 0; i < lines_.size(); ++i) {
    if (i > 0) text.append(separator);
    text.append(lines_[i].data, lines_[i].size);
  }
  return text;
}

void TStringList::SetSeparateText(std::string_view text, std::string_view separator) {
  TTextBlock block(text.size());
  if (!text.empty()) std::memcpy(block.Data(), text.data(), text.size());
  DropLines();
  Keep(block);
  std::string_view rest = block.View();
  if (!separator.empty()) {
    for (size_t at; (at = rest.find(separator)) != std::string_view::npos;) {
      AddSlice(rest.substr(0, at));
      rest.remove_prefix(at + separator.size());
    }
  }
  if (!rest.empty()) AddSlice(rest);
  Changed();
}

void TStringList::Assign(const TStringList& other) {
  if (this == &other) return;
  DropLines();
  lines_ = other.lines_;
  blocks_ = other.blocks_;
  Changed();
}

void TStringList::AddStrings(const TStringList& other) {
  if (other.lines_.empty()) return;
  if (this == &other) {
    AddStrings(TStringList(other));
    return;
  }
  lines_.insert(lines_.end(), other.lines_.begin(), other.lines_.end());
  for (const TTextBlock& block : other.blocks_) Keep(block);
  Changed();
}

void TStringList::EraseEmptyLines() {
  const auto erased = std::erase_if(lines_, [](const TLine& line) { return IsBlank(View(line)); });
  if (erased > 0) Changed();
}

void TStringList::LoadFromFile(std::string_view path) {
  platform::TFile file(path, platform::TOpenMode::kRead);
  TTextBlock block(static_cast<size_t>(file.Size()));
  const size_t got = file.Read(block.Data(), block.Size());
  if (got < block.Size()) {  // it shrank meanwhile
    SetText(block.View().substr(0, got));
  } else {
    SetText(std::move(block));
  }
}

void TStringList::SaveToFile(std::string_view path) const {
  platform::ReplaceFileContent(path, Text());
}

}  // namespace quarda
