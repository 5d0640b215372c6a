// INI files as plug-ins and the engine see them.
#pragma once

#include <QDIntf.h>
#include <QDStringsAdapters.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "IniFile.h"

namespace quarda {

/// An INI file in memory that knows its name and whether it was really changed.
///
/// A name without ":" is relative to the engine's base folder. A missing file reads as empty; one
/// that cannot be read, or not be written, raises EPlatformError.
class TIniDocument {
 public:
  TIniDocument(std::string_view fileName, IQuardaApp* app);
  TIniDocument(const TIniDocument&) = delete;
  TIniDocument& operator=(const TIniDocument&) = delete;
  /// Saves. A destructor cannot report that this failed; whoever needs to know calls Save before.
  ~TIniDocument();

  /// The application that file names are resolved with.
  IQuardaApp* App() const noexcept { return app_.Get(); }
  const std::string& FileName() const noexcept { return fileName_; }
  const TIniFile& Ini() const noexcept { return ini_; }

  /// The values as the file holds them; nothing when there is none or it does not convert.
  std::optional<std::string_view> Text(std::string_view section, std::string_view key) const {
    return ini_.Value(section, key);
  }
  std::optional<int32_t> Integer(std::string_view section, std::string_view key) const;
  /// A negative number stands for the same 32 bits without sign.
  std::optional<uint32_t> Unsigned(std::string_view section, std::string_view key) const;
  bool Exists(std::string_view section, std::string_view key) const {
    return ini_.Value(section, key).has_value();
  }

  /// These write in every case; the file counts as changed when the value, read with its type,
  /// differs from the one before.
  void WriteText(std::string_view section, std::string_view key, std::string_view value);
  void WriteInteger(std::string_view section, std::string_view key, int32_t value);
  void WriteUnsigned(std::string_view section, std::string_view key, uint32_t value);
  void WriteBoolean(std::string_view section, std::string_view key, bool value);

  /// These count as a change in every case.
  void DeleteValue(std::string_view section, std::string_view key);
  void DeleteSection(std::string_view section);
  void WriteSection(std::string_view section, const TStringList& lines);
  void Clear();

  /// These leave the question whether the file was changed as it is.
  void SetLines(const TStringList& lines) { ini_.SetLines(lines); }
  void ReadAgain();

  void Save();
  void SaveAlways();
  /// Clears the content and deletes the file, if there is one.
  void DeleteFromDisk();

 private:
  void Write(std::string_view section, std::string_view key, std::string_view text, bool isSame);

  const TRef<IQuardaApp> app_;
  const std::string fileName_;
  TIniFile ini_;
  bool modified_ = false;
};

/// The operations of IConfigFile, for objects of it and of interfaces that derive from it; those
/// name it among the parents.
template <class Interface, class... Parents>
class TConfigFileBase : public TRefCounted<Interface, Parents...> {
 public:
  TConfigFileBase(std::string_view fileName, IQuardaApp* app) : document_(fileName, app) {}

  AnsiString QDCALL GetFileName() override { return document_.FileName(); }
  AnsiString QDCALL ReadString(const AnsiString& section, const AnsiString& ident,
                               const AnsiString& defaultValue) override {
    const auto text = document_.Text(section, ident);
    return text ? AnsiString(*text) : defaultValue;
  }
  int32_t QDCALL ReadInteger(const AnsiString& section, const AnsiString& ident,
                             int32_t defaultValue) override {
    return document_.Integer(section, ident).value_or(defaultValue);
  }
  bool QDCALL ReadBool(const AnsiString& section, const AnsiString& ident,
                       bool defaultValue) override {
    return document_.Integer(section, ident).value_or(defaultValue) != 0;
  }
  void QDCALL WriteString(const AnsiString& section, const AnsiString& ident,
                          const AnsiString& value) override {
    document_.WriteText(section, ident, value);
  }
  void QDCALL WriteInteger(const AnsiString& section, const AnsiString& ident,
                           int32_t value) override {
    document_.WriteInteger(section, ident, value);
  }
  void QDCALL WriteBool(const AnsiString& section, const AnsiString& ident, bool value) override {
    document_.WriteBoolean(section, ident, value);
  }
  void QDCALL DeleteValue(const AnsiString& section, const AnsiString& ident) override {
    document_.DeleteValue(section, ident);
  }
  void QDCALL DeleteSection(const AnsiString& section) override {
    document_.DeleteSection(section);
  }
  TRef<IStringList> QDCALL ReadSection(const AnsiString& section) override {
    return ListOf(document_.Ini().Section(section));
  }
  void QDCALL WriteSection(const AnsiString& section, IStringList* lines) override {
    document_.WriteSection(section, LinesOf(lines));
  }
  bool QDCALL SectionExists(const AnsiString& section) override {
    return document_.Ini().HasSection(section);
  }
  bool QDCALL ValueExists(const AnsiString& section, const AnsiString& ident) override {
    return document_.Exists(section, ident);
  }
  TRef<IStringList> QDCALL ReadSections() override {
    return ListOf(document_.Ini().SectionNames());
  }
  void QDCALL Clear() override { document_.Clear(); }
  void QDCALL DeleteFile() override { document_.DeleteFromDisk(); }
  void QDCALL DiscardChanges() override { document_.ReadAgain(); }
  TRef<IStringList> QDCALL GetLines() override { return ListOf(document_.Ini().Lines()); }
  void QDCALL SetLines(IStringList* lines) override { document_.SetLines(LinesOf(lines)); }
  void QDCALL Save() override { document_.Save(); }

 protected:
  static TRef<IStringList> ListOf(TStringList lines) {
    return StringListAdapterOwned(std::make_unique<TStringList>(std::move(lines)));
  }
  /// Null stands for an empty list.
  static TStringList LinesOf(IStringList* list) {
    return list ? std::move(*IStringListToStrings(list)) : TStringList();
  }

  TIniDocument document_;
};

/// An INI file: `MakeRef<TConfigFile>(name, app)`.
class TConfigFile final : public TConfigFileBase<IConfigFile> {
 public:
  using TConfigFileBase::TConfigFileBase;
};

}  // namespace quarda
