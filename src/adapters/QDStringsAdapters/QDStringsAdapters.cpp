#include "QDStringsAdapters.h"

#include <utility>

namespace quarda {
namespace {

// A negative index becomes one that no list has, and so the list's own index error.
size_t ToIndex(int32_t index) { return static_cast<size_t>(index); }

// The count is taken first, so that a list can be appended to itself.
void AppendLines(TStringList& list, IStringList& source) {
  const TStringListUpdate update(list);
  const int32_t count = source.GetCount();
  for (int32_t i = 0; i < count; ++i) list.Add(source.GetStrings(i));
}

}  // namespace

int32_t TStringListAdapter::GetCount() { return static_cast<int32_t>(list_.Count()); }

AnsiString TStringListAdapter::GetValues(const AnsiString& name) { return list_.Value(name); }

void TStringListAdapter::SetValues(const AnsiString& name, const AnsiString& value) {
  list_.SetValue(name, value);
}

AnsiString TStringListAdapter::GetNames(int32_t index) { return list_.Name(ToIndex(index)); }

AnsiString TStringListAdapter::GetStrings(int32_t index) { return list_.Line(ToIndex(index)); }

void TStringListAdapter::SetStrings(int32_t index, const AnsiString& line) {
  list_.SetLine(ToIndex(index), line);
}

AnsiString TStringListAdapter::GetText() { return list_.Text(); }

void TStringListAdapter::SetText(const AnsiString& text) { list_.SetText(text.View()); }

void TStringListAdapter::Assign(IStringList* source) {
  if (source) {
    list_.SetText(source->GetText().View());
  } else {
    list_.Clear();
  }
}

void TStringListAdapter::LoadFromFile(const AnsiString& fileName) { list_.LoadFromFile(fileName); }

void TStringListAdapter::SaveToFile(const AnsiString& fileName) { list_.SaveToFile(fileName); }

void TStringListAdapter::Clear() { list_.Clear(); }

int32_t TStringListAdapter::Add(const AnsiString& line) {
  return static_cast<int32_t>(list_.Add(line));
}

void TStringListAdapter::Insert(int32_t index, const AnsiString& line) {
  list_.Insert(ToIndex(index), line);
}

void TStringListAdapter::Delete(int32_t index) { list_.Delete(ToIndex(index)); }

int32_t TStringListAdapter::IndexOf(const AnsiString& line) {
  return static_cast<int32_t>(list_.IndexOf(line));
}

int32_t TStringListAdapter::IndexOfName(const AnsiString& name) {
  return static_cast<int32_t>(list_.IndexOfName(name));
}

void TStringListAdapter::AddStrings(IStringList* source) {
  if (source) AppendLines(list_, *source);
}

AnsiString TStringListAdapter::GetSeparateText(const AnsiString& separator) {
  return list_.SeparateText(separator);
}

void TStringListAdapter::SetSeparateText(const AnsiString& text, const AnsiString& separator) {
  list_.SetSeparateText(text, separator);
}

void TStringListAdapter::EraseEmptyLines() { list_.EraseEmptyLines(); }

TRef<IStringList> TStringListAdapter::CopyList() {
  TRef<IStringList> copy = NewStringListAdatper();
  copy->Assign(this);
  return copy;
}

TRef<IStringList> StringListAdapter(TStringList& list) { return MakeRef<TStringListAdapter>(list); }

TRef<IStringList> StringListAdapterOwned(std::shared_ptr<TStringList> list) {
  return MakeRef<TStringListAdapter>(std::move(list));
}

TRef<IStringList> NewStringListAdatper() {
  return StringListAdapterOwned(std::make_unique<TStringList>());
}

std::unique_ptr<TStringList> IStringListToStrings(IStringList* list) {
  if (!list) return nullptr;
  auto lines = std::make_unique<TStringList>();
  AppendLines(*lines, *list);
  return lines;
}

}  // namespace quarda
