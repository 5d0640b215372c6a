// The header of a mail or of a part (RFC 5322): an ordered list of fields, each a list of value
// lines.
#pragma once

#include <Errors.h>
#include <StringList.h>
#include <TextBlock.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarda {

class THeader;
class TTextStreamer;

/// A field name that is empty or blank.
class EMailHeaderError : public EError {
 public:
  using EError::EError;
  const char* ClassName() const noexcept override { return "EMailHeaderError"; }
};

/// One field. Its value is kept as the pieces between semicolons: the first is the main value, the
/// others are parameters of the form name=value. Belongs to its header and lives until it is
/// deleted or the header is cleared, loaded or destroyed. An index outside the values raises
/// EListError.
class THeaderItem {
 public:
  /// A blank name raises EMailHeaderError.
  THeaderItem(THeader& header, std::string_view name);
  THeaderItem(const THeaderItem&) = delete;
  THeaderItem& operator=(const THeaderItem&) = delete;

  std::string_view GetName() const noexcept { return name_; }
  /// Every change to this list marks the header as modified.
  TStringList& GetValues() noexcept { return values_; }
  const TStringList& GetValues() const noexcept { return values_; }
  void SetValues(const TStringList& values);
  /// Whether the field spanned several lines when it was read; it is then written that way.
  bool IsFolded() const noexcept { return folded_; }

  /// The main value; empty when there is none.
  std::string GetValue() const;
  /// Replaces all value lines by this one; an empty value leaves none.
  void SetValue(std::string_view value);
  /// The value lines joined as the field is written.
  std::string GetValuesAsText() const;
  /// Splits at semicolons outside quotes, angle brackets and encoded words.
  void SetValuesAsText(std::string_view text);

  size_t AddValue(std::string_view value) { return values_.Add(value); }
  void DeleteValue(size_t index) { values_.Delete(index); }
  void ClearValues() { values_.Clear(); }
  size_t GetCount() const noexcept { return values_.Count(); }
  /// Deletes the field from its header; the item is gone afterwards.
  void Delete();

 private:
  friend class THeader;

  THeader& header_;
  const std::string name_;
  TStringList values_;
  bool folded_ = false;
};

/// The fields in file order; names may repeat and are compared without regard to ASCII letter case.
/// An index outside the list raises EListError.
///
/// A field that was read stays a slice of the text it was read from; its item is made when somebody
/// asks for it and has the same address from then on.
class THeader : private TStringListObserver {
 public:
  THeader() = default;
  THeader(const THeader&) = delete;
  THeader& operator=(const THeader&) = delete;
  virtual ~THeader() = default;

  void Assign(const THeader& source);
  /// A blank name raises EMailHeaderError, which leaves the fields before it.
  void LoadFromStrings(const TStringList& lines);
  /// Appends one line for each field; that of a folded one holds line breaks.
  void SaveToStrings(TStringList& lines);
  /// Reads up to the first empty line. The fields point into the streamer's block when `share` is
  /// set and it reads from memory, else into a copy. A blank name raises EMailHeaderError, which
  /// leaves the fields before it.
  void LoadFromTextStreamer(TTextStreamer& streamer, bool share = true);
  void SaveToTextStreamer(TTextStreamer& streamer);

  void Clear();
  /// An empty value adds no value line. A blank name raises EMailHeaderError.
  THeaderItem& Add(std::string_view name, std::string_view value);
  THeaderItem& Insert(size_t index, std::string_view name, std::string_view value);
  void Delete(size_t index);
  /// Deletes the first field of that name, if any.
  void Delete(std::string_view name);
  /// Sets the value of the first field of that name, or adds one; raises as `Add` does.
  THeaderItem& Replace(std::string_view name, std::string_view value);

  /// -1 when there is none.
  ptrdiff_t IndexOf(std::string_view name) const noexcept;
  ptrdiff_t IndexOf(const THeaderItem& item) const noexcept;
  size_t GetCount() const noexcept { return fields_.size(); }
  THeaderItem& GetItems(size_t index);
  /// The name and the joined value lines of a field, without making its item.
  std::string_view NameOf(size_t index) const;
  std::string ValuesAsText(size_t index) const;
  /// Null when there is none.
  THeaderItem* GetHeader(std::string_view name);
  /// The main value of the first field of that name; empty when there is none.
  std::string GetHeaderStr(std::string_view name) const;
  void SetHeaderStr(std::string_view name, std::string_view value) { Replace(name, value); }

  bool GetModified() const noexcept { return modified_; }
  void SetModified(bool modified) noexcept { modified_ = modified; }

 protected:
  /// Called after every change by somebody, not by loading and saving.
  virtual void ChangeNotify() { modified_ = true; }

 private:
  friend class THeaderItem;
  friend class THeaderValues;

  // A field that was read is `raw` until its item exists; from then on the item holds the truth.
  struct TField {
    std::string_view name;
    std::string_view raw;     // the value as it lies in the block
    bool spansLines = false;  // `raw` holds line ends, which are no part of the value
    bool folded = false;
    std::unique_ptr<THeaderItem> item;
  };

  void StringListChanged() override { ChangeNotify(); }
  void CheckIndex(size_t index) const;
  TField MakeField(std::string_view name, std::string_view value);
  THeaderItem& ItemOf(TField& field);
  void AddRead(TField& pending);
  size_t ParseFields(std::string_view text);

  std::vector<TField> fields_;
  TTextBlock block_;  // what the fields point into
  bool modified_ = false;
};

/// The value lines of one field, one after the other, without making its item:
/// `THeaderValues values(header, name); while (values.Next()) Use(values.Line());`
/// The header must not change meanwhile.
class THeaderValues {
 public:
  /// The first field of that name; there are no values without one.
  THeaderValues(const THeader& header, std::string_view name);
  THeaderValues(const THeaderValues&) = delete;
  THeaderValues& operator=(const THeaderValues&) = delete;

  bool Found() const noexcept { return field_ != nullptr; }
  bool Next();
  std::string_view Line() const noexcept { return line_; }
  /// What stands between two lines when the field is written.
  std::string_view Separator() const noexcept;

 private:
  friend class THeader;
  explicit THeaderValues(const THeader::TField& field) { Start(field); }
  void Start(const THeader::TField& field);

  const THeader::TField* field_ = nullptr;
  std::string unfolded_;
  std::string_view rest_;  // of a raw value
  std::string_view line_;
  size_t index_ = 0;  // of the item's next value line
};

}  // namespace quarda
