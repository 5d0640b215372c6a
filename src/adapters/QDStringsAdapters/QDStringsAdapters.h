// String lists as plug-ins see them.
#pragma once

#include <QDIntf.h>
#include <StringList.h>

#include <cstdint>
#include <memory>
#include <utility>

namespace quarda {

/// The one implementation of IStringList: forwards every operation to a string list that it
/// borrows, owns or shares. A borrowed list must outlive every adapter over it.
class TStringListAdapter final : public TRefCounted<IStringList> {
 public:
  explicit TStringListAdapter(TStringList& borrowed) noexcept : list_(borrowed) {}
  explicit TStringListAdapter(std::shared_ptr<TStringList> owned) noexcept
      : owned_(std::move(owned)), list_(*owned_) {}

  int32_t QDCALL GetCount() override;
  AnsiString QDCALL GetValues(const AnsiString& name) override;
  void QDCALL SetValues(const AnsiString& name, const AnsiString& value) override;
  AnsiString QDCALL GetNames(int32_t index) override;
  AnsiString QDCALL GetStrings(int32_t index) override;
  void QDCALL SetStrings(int32_t index, const AnsiString& line) override;
  AnsiString QDCALL GetText() override;
  void QDCALL SetText(const AnsiString& text) override;
  void QDCALL Assign(IStringList* source) override;
  void QDCALL LoadFromFile(const AnsiString& fileName) override;
  void QDCALL SaveToFile(const AnsiString& fileName) override;
  void QDCALL Clear() override;
  int32_t QDCALL Add(const AnsiString& line) override;
  void QDCALL Insert(int32_t index, const AnsiString& line) override;
  void QDCALL Delete(int32_t index) override;
  int32_t QDCALL IndexOf(const AnsiString& line) override;
  int32_t QDCALL IndexOfName(const AnsiString& name) override;
  void QDCALL AddStrings(IStringList* source) override;
  AnsiString QDCALL GetSeparateText(const AnsiString& separator) override;
  void QDCALL SetSeparateText(const AnsiString& text, const AnsiString& separator) override;
  void QDCALL EraseEmptyLines() override;
  TRef<IStringList> QDCALL CopyList() override;

 private:
  const std::shared_ptr<TStringList> owned_;  // null when the list is borrowed
  TStringList& list_;
};

/// An adapter over a list that outlives it.
TRef<IStringList> StringListAdapter(TStringList& list);
/// An adapter that owns its list, or shares it.
TRef<IStringList> StringListAdapterOwned(std::shared_ptr<TStringList> list);
/// An adapter that owns a new, empty list.
TRef<IStringList> NewStringListAdatper();
/// A copy of the lines, line by line; null for null.
std::unique_ptr<TStringList> IStringListToStrings(IStringList* list);

}  // namespace quarda
