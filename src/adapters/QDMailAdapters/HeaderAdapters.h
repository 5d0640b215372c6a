// Headers and their fields as plug-ins see them.
#pragma once

#include <MailRead.h>
#include <QDIntf.h>

#include <cstdint>

namespace quarda {

/// One field; borrowed, and gone after `Delete`.
class THeaderItemAdapter final : public TRefCounted<IHeaderItem> {
 public:
  explicit THeaderItemAdapter(THeaderItem& item);

  AnsiString QDCALL GetName() override;
  AnsiString QDCALL GetValue() override;
  void QDCALL SetValue(const AnsiString& value) override;
  int32_t QDCALL GetCount() override;
  TRef<IStringList> QDCALL GetValues() override;
  void QDCALL SetValues(IStringList* values) override;
  AnsiString QDCALL GetValuesAsText() override;
  void QDCALL SetValuesAsText(const AnsiString& text) override;
  void QDCALL Delete() override;
  int32_t QDCALL AddValue(const AnsiString& value) override;
  void QDCALL DeleteValue(int32_t index) override;
  void QDCALL ClearValues() override;

 private:
  THeaderItem& Item() const;

  THeaderItem* item_;  // null once the field is deleted
  TRef<IStringList> values_;
};

/// A header; borrowed.
class THeaderAdapter final : public TRefCounted<IHeader> {
 public:
  explicit THeaderAdapter(THeader& header) noexcept : header_(header) {}

  TRef<IHeaderItem> QDCALL GetItems(int32_t index) override;
  TRef<IHeaderItem> QDCALL GetHeader(const AnsiString& name) override;
  AnsiString QDCALL GetHeaderStr(const AnsiString& name) override;
  void QDCALL SetHeaderStr(const AnsiString& name, const AnsiString& value) override;
  int32_t QDCALL GetCount() override;
  void QDCALL Assign(IHeader* source) override;
  void QDCALL Clear() override;
  TRef<IHeaderItem> QDCALL Add(const AnsiString& name, const AnsiString& value) override;
  TRef<IHeaderItem> QDCALL Insert(int32_t index, const AnsiString& name,
                                  const AnsiString& value) override;
  void QDCALL Delete(int32_t index) override;
  void QDCALL DeleteByName(const AnsiString& name) override;
  int32_t QDCALL IndexOf(const AnsiString& name) override;
  int32_t QDCALL IndexOfItem(IHeaderItem* item) override;
  TRef<IHeaderItem> QDCALL Replace(const AnsiString& name, const AnsiString& value) override;

 private:
  THeader& header_;
};

}  // namespace quarda
