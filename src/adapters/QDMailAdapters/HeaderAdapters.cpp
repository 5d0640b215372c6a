#include "HeaderAdapters.h"

#include <Errors.h>
#include <QDStringsAdapters.h>

namespace quarda {
namespace {

TRef<IHeaderItem> ItemAdapter(THeaderItem& item) { return MakeRef<THeaderItemAdapter>(item); }

}  // namespace

THeaderItemAdapter::THeaderItemAdapter(THeaderItem& item)
    : item_(&item), values_(StringListAdapter(item.GetValues())) {}

THeaderItem& THeaderItemAdapter::Item() const {
  if (!item_) throw EError("The header field was deleted.");
  return *item_;
}

AnsiString THeaderItemAdapter::GetName() { return Item().GetName(); }

AnsiString THeaderItemAdapter::GetValue() { return Item().GetValue(); }

void THeaderItemAdapter::SetValue(const AnsiString& value) { Item().SetValue(value); }

int32_t THeaderItemAdapter::GetCount() { return static_cast<int32_t>(Item().GetCount()); }

TRef<IStringList> THeaderItemAdapter::GetValues() { return values_; }

void THeaderItemAdapter::SetValues(IStringList* values) {
  Item();
  values_->Assign(values);
}

AnsiString THeaderItemAdapter::GetValuesAsText() { return Item().GetValuesAsText(); }

void THeaderItemAdapter::SetValuesAsText(const AnsiString& text) { Item().SetValuesAsText(text); }

void THeaderItemAdapter::Delete() {
  values_.Reset();
  Item().Delete();
  item_ = nullptr;
}

int32_t THeaderItemAdapter::AddValue(const AnsiString& value) {
  return static_cast<int32_t>(Item().AddValue(value));
}

void THeaderItemAdapter::DeleteValue(int32_t index) {
  Item().DeleteValue(static_cast<size_t>(index));
}

void THeaderItemAdapter::ClearValues() { Item().ClearValues(); }

TRef<IHeaderItem> THeaderAdapter::GetItems(int32_t index) {
  return ItemAdapter(header_.GetItems(static_cast<size_t>(index)));
}

TRef<IHeaderItem> THeaderAdapter::GetHeader(const AnsiString& name) {
  THeaderItem* const item = header_.GetHeader(name);
  return item ? ItemAdapter(*item) : nullptr;
}

AnsiString THeaderAdapter::GetHeaderStr(const AnsiString& name) {
  return header_.GetHeaderStr(name);
}

void THeaderAdapter::SetHeaderStr(const AnsiString& name, const AnsiString& value) {
  header_.SetHeaderStr(name, value);
}

int32_t THeaderAdapter::GetCount() { return static_cast<int32_t>(header_.GetCount()); }

void THeaderAdapter::Assign(IHeader* source) {
  header_.Clear();
  const int32_t count = source ? source->GetCount() : 0;
  for (int32_t i = 0; i < count; ++i) {
    const TRef<IHeaderItem> from = source->GetItems(i);
    Add(from->GetName(), {})->GetValues()->Assign(from->GetValues().Get());
  }
}

void THeaderAdapter::Clear() { header_.Clear(); }

TRef<IHeaderItem> THeaderAdapter::Add(const AnsiString& name, const AnsiString& value) {
  return ItemAdapter(header_.Add(name, value));
}

TRef<IHeaderItem> THeaderAdapter::Insert(int32_t index, const AnsiString& name,
                                         const AnsiString& value) {
  return ItemAdapter(header_.Insert(static_cast<size_t>(index), name, value));
}

void THeaderAdapter::Delete(int32_t index) { header_.Delete(static_cast<size_t>(index)); }

void THeaderAdapter::DeleteByName(const AnsiString& name) { header_.Delete(name.View()); }

int32_t THeaderAdapter::IndexOf(const AnsiString& name) {
  return static_cast<int32_t>(header_.IndexOf(name.View()));
}

int32_t THeaderAdapter::IndexOfItem(IHeaderItem* item) {
  return item ? IndexOf(item->GetName()) : -1;
}

TRef<IHeaderItem> THeaderAdapter::Replace(const AnsiString& name, const AnsiString& value) {
  return ItemAdapter(header_.Replace(name, value));
}

}  // namespace quarda
