// The attributes of one tag, and the tag as an object.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarda {

/// One attribute as written.
struct TTagAttr {
  std::string name;
  std::string value;       ///< all behind the "=", with its quotes; empty without "="
  int32_t lineBreaks = 0;  ///< line feeds in the white space behind it
  int32_t blanks = 0;      ///< blanks behind the last of them
};

/// The attributes of a tag in their order, with the layout between them. The text is read on first
/// use; names may repeat, and look-ups by name take the first and ignore letter case. Indexes count
/// from 0; an index outside does nothing and gives "" or false.
class TAttrList {
 public:
  virtual ~TAttrList() = default;

  /// Drops everything.
  virtual void Clear();
  /// Reads the text into the list.
  virtual void Parse(std::string_view text);
  /// Reads the text that `SetAsString` left, if it still waits.
  void Prepare();
  /// Splits the text of one attribute at its first "=" outside quotes.
  static void ParseOne(std::string_view text, std::string& name, std::string& value);

  /// Takes the text of all attributes; it is kept as it is until an attribute is asked for.
  void SetAsString(std::string text);
  /// The text as given, or written anew once it was read; line feeds then come as CR LF.
  std::string GetAsString() const;
  /// The attributes on one line.
  std::string GetAsProperString() const;

  int32_t GetCount();
  bool HasAttr(int32_t index);
  bool HasAttrName(std::string_view name);
  /// The index of the first attribute of that name, or -1.
  int32_t FindAttribute(std::string_view name, bool caseSensitive);

  std::string GetNames(int32_t index);
  /// An empty name deletes the attribute.
  void SetNames(int32_t index, std::string_view name);
  std::string GetValues(int32_t index);
  /// The value is put in quotes when it needs them.
  void SetValues(int32_t index, std::string_view value);
  std::string GetValue(std::string_view name);
  /// Adds the attribute when there is none of that name.
  void SetValue(std::string_view name, std::string_view value);

  /// An attribute as one text, `name=value`; an empty text deletes it.
  std::string GetAttrStrings(int32_t index);
  void SetAttrStrings(int32_t index, std::string_view text);
  std::string GetAttrString(std::string_view name);
  /// Adds the attribute when there is none of that name, under the name in the text.
  void SetAttrString(std::string_view name, std::string_view text);

  bool Delete(int32_t index);
  void DeleteName(std::string_view name);

 private:
  TTagAttr* Attribute(int32_t index);
  void Add(TTagAttr attribute);
  int32_t FindFirst(std::string_view name);
  void SortNames();
  void ForgetSearches();

  std::vector<TTagAttr> attributes_;
  std::optional<std::string> pending_;
  size_t searches_ = 0;           // by name, since the attributes last changed
  std::vector<uint32_t> sorted_;  // attributes by name; empty when a name changed
};

/// The value as it is to be written: in quotes when a character in it asks for them.
std::string NeedQuotations(std::string_view value);

/// One tag: its name, its place in the text it was read from, its attributes. Kept by shared
/// references; the operations stand in a fixed order of slots.
class IAttrListGuard {
 public:
  /// Owned by the tag.
  virtual TAttrList& GetAttrList() = 0;
  /// The tag's text, written from its attributes.
  virtual std::string GetAsString() = 0;
  virtual void SetAsString(std::string_view tagText) = 0;
  /// The name as written, "/b" for a closing tag.
  virtual std::string GetTagName() const = 0;
  /// Trims the name; an empty one changes nothing.
  virtual void SetTagName(std::string_view name) = 0;
  virtual std::string GetUpperTagName() const = 0;
  /// The positions, from 1, of the tag's "<" and ">" when it was read.
  virtual int32_t GetStart() const = 0;
  virtual int32_t GetEnd() const = 0;

 protected:
  ~IAttrListGuard() = default;
};

/// A shared reference to a tag; may be null.
using TAttrListGuardRef = std::shared_ptr<IAttrListGuard>;

class TAttrListGuard final : public IAttrListGuard {
 public:
  TAttrListGuard(int32_t start, int32_t end) : start_(start), end_(end) {}

  TAttrList& GetAttrList() override { return attributes_; }
  std::string GetAsString() override;
  void SetAsString(std::string_view tagText) override;
  std::string GetTagName() const override { return name_; }
  void SetTagName(std::string_view name) override;
  std::string GetUpperTagName() const override;
  int32_t GetStart() const override { return start_; }
  int32_t GetEnd() const override { return end_; }

 private:
  std::string name_;
  int32_t start_;
  int32_t end_;
  TAttrList attributes_;
};

/// A tag object for the text of one tag.
TAttrListGuardRef ParseTag(std::string_view tagText, int32_t start, int32_t end);

/// Splits the text of one tag into its name and the text of its attributes.
void TagStringToComponents(std::string_view tagText, std::string& name, std::string& attrText);

/// The name in the text of one tag; a view into it.
std::string_view TagNameOf(std::string_view tagText) noexcept;

/// `count` line ends of CR and LF; none for a negative count.
std::string LineFeed(int32_t count);

}  // namespace quarda
