// What crosses the boundary to outside plug-ins: identities, ordinals, strings, references.
#include <CurrentApp.h>
#include <QDIntf.h>
#include <TestApp.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace quarda {
namespace {

template <class... I>
constexpr bool kPlainInterfaces = ((sizeof(I) == sizeof(void*) && std::is_abstract_v<I> &&
                                    !std::has_virtual_destructor_v<I> &&
                                    std::is_base_of_v<IRefCounted, I>)&&...);
static_assert(kPlainInterfaces<IStringList, IConfigFile, IConfig, IHeaderItem, IHeader, IMailPart,
                               IMailAttachment, IMailText, IMail, IPlugin, IPluginList, IArguments,
                               IQuardaInstance, IQuardaInstanceEx, IQuardaApp>,
              "an interface is a table of operations and nothing else");
template <class... E>
constexpr bool kFourByteEnums = ((std::is_same_v<std::underlying_type_t<E>, int32_t>)&&...);
static_assert(kFourByteEnums<TIFrameBlockMode, TAttachmentBlockMode, TASmtpBlockMode,
                             TScannedTextXHeader, TScanOnlyExtensions, TOvraMailFileType,
                             TOvraMailType, TMailCheckMode, TEncodeType>);
static_assert(sizeof(bool) == 1);
static_assert(sizeof(AnsiString) == sizeof(void*) && sizeof(TRef<IMail>) == sizeof(void*));

static_assert(ibmNone == 0 && ibmMarkAsVirus == 1 && ibmAllowHttp == 2 && ibmCommentAll == 3 &&
              ibmCommentHttp == 4 && ibmRemove == 5);
static_assert(abmNone == 0 && abmMarkAsVirus == 1 && abmRemove == 2);
static_assert(asbmNone == 0 && asbmMarkAsVirus == 1 && asbmSubjectNote == 2);
static_assert(stxhAppend == 0 && stxhXHeader == 1 && stxhBoth == 2);
static_assert(soeOff == 0 && soeExt == 1 && soeNotExt == 2);
static_assert(ftInMail == 0 && ftOutMail == 1 && ftAttachment == 2);
static_assert(mtUnknown == 0 && mtInMail == 1 && mtOutMail == 2);
static_assert(mcmAll == 0 && mcmIncomming == 1 && mcmOutgoing == 2);
static_assert(eCurrent == 0 && e8bit == 1 && e7bit == 2 && eQuotedPrintable == 3 && eBase64 == 4 &&
              eUUE == 5 && eUnknown == 6);
static_assert(kLogError == 0 && kLogWarning == 1 && kLogExtended == 2 && kLogPassed == 3 &&
              kLogDebug == 4);

std::string TextOf(const TGuid& guid) {
  char text[40];
  const auto& d = guid.data4;
  std::snprintf(text, sizeof(text), "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                guid.data1, guid.data2, guid.data3, d[0], d[1], d[2], d[3], d[4], d[5], d[6], d[7]);
  return text;
}

TEST(Contract, EveryInterfaceKeepsItsIdentity) {
  const struct {
    const char* text;
    TGuid guid;
  } rows[] = {
      {"{00000000-0000-0000-C000-000000000046}", IRefCounted::kGuid},
      {"{B417770C-7DDD-4671-8F19-DBF08B60807D}", IStringList::kGuid},
      {"{E9A0E392-DC6F-4CAA-8889-6888897F48E1}", IConfigFile::kGuid},
      {"{DC5B268B-FF1E-4665-B610-D794B856CE36}", IConfig::kGuid},
      {"{DECFAF2B-A2C7-4CF7-8C24-F9FF5360DE12}", IHeaderItem::kGuid},
      {"{F031575C-3A2C-4363-9943-374939EF0EDE}", IHeader::kGuid},
      {"{7F9E7E9E-087E-4DC7-BCBF-0A4B966B0966}", IMailPart::kGuid},
      {"{54F64997-8E27-4F00-8ADA-CDD4401A324A}", IMailAttachment::kGuid},
      {"{FA8338E6-7459-4B7B-95EC-2D654B324E02}", IMailText::kGuid},
      {"{747C0CEE-30D4-4890-AC90-648187AE0C82}", IMail::kGuid},
      {"{9552B83A-4BF8-44E7-A0A8-4A1C171BB4CD}", IPlugin::kGuid},
      {"{6DB9A420-141D-4E4C-803E-387BCEA347A8}", IPluginList::kGuid},
      {"{46D1C181-1D07-4D4A-A9A3-CDA63789D639}", IArguments::kGuid},
      {"{83499D0D-1F10-4754-A680-92AC3882FB73}", IQuardaInstance::kGuid},
      {"{A2F09600-9312-4AE9-AD93-234F360182B0}", IQuardaApp::kGuid},
      {"{9C7DA524-0F29-4876-882A-D06C2C98197D}", IQuardaInstanceEx::kGuid},
  };
  for (const auto& row : rows) EXPECT_EQ(TextOf(row.guid), row.text);
}

// ---- Strings

TEST(AnsiString, IsAValue) {
  const struct {
    const char* row;
    std::string_view text;
  } rows[] = {{"empty", ""},
              {"one character", "x"},
              {"bytes above 127", "Ung\xFCltig"},
              {"NUL inside", std::string_view("a\0b", 3)},
              {"NUL alone", std::string_view("\0", 1)}};
  for (const auto& row : rows) {
    const AnsiString made(row.text);
    AnsiString copy(made), moved(std::move(copy)), assigned("old");
    assigned = moved;
    moved = AnsiString("other");
    assigned = *&assigned;
    EXPECT_EQ(assigned.View(), row.text) << row.row;
    EXPECT_TRUE(assigned == made && assigned == row.text) << row.row;
    EXPECT_EQ(assigned.Size(), row.text.size()) << row.row;
    EXPECT_EQ(assigned.IsEmpty(), row.text.empty()) << row.row;
    EXPECT_EQ(assigned.CStr()[assigned.Size()], '\0') << row.row;
    EXPECT_EQ(assigned.Str(), row.text) << row.row;
    EXPECT_EQ(moved, "other") << row.row;
  }
  EXPECT_FALSE(AnsiString("a") == AnsiString("A"));
  EXPECT_FALSE(AnsiString(std::string_view("a\0b", 3)) == AnsiString("a"));
}

void* PointerIn(const AnsiString& text) {
  void* pointer;
  std::memcpy(&pointer, &text, sizeof(pointer));
  return pointer;
}

// The block as another compiler lays it out.
struct TForeignBlock {
  int32_t references;
  uint32_t size;
  void(QDCALL* release)(TForeignBlock*);
  char characters[4];
};
static_assert(offsetof(TForeignBlock, characters) == 8 + sizeof(void*));

TEST(AnsiString, IsOnePointerToABlockOfFixedLayout) {
  EXPECT_EQ(PointerIn(AnsiString("")), nullptr);
  const AnsiString text("abc");
  const AnsiString second(text);
  const auto* block = static_cast<const TForeignBlock*>(PointerIn(text));
  EXPECT_EQ(PointerIn(second), block);
  EXPECT_EQ(block->references, 2);
  EXPECT_EQ(block->size, 3u);
  EXPECT_STREQ(block->characters, "abc");
}

TForeignBlock* released = nullptr;

void QDCALL NoteRelease(TForeignBlock* dead) { released = dead; }

TEST(AnsiString, TheMakerOfABlockFreesIt) {
  released = nullptr;
  TForeignBlock block{1, 3, NoteRelease, "abc"};
  {
    AnsiString text;
    TForeignBlock* const pointer = &block;
    std::memcpy(static_cast<void*>(&text), &pointer, sizeof(pointer));
    AnsiString copy = text;
    text = AnsiString();
    EXPECT_EQ(copy, "abc");
    EXPECT_EQ(released, nullptr) << "still held";
  }
  EXPECT_EQ(released, &block);
}

// ---- References

struct IShape : IRefCounted {
  static constexpr TGuid kGuid{1, 0, 0, {}};
  virtual int32_t QDCALL Sides() = 0;

 protected:
  ~IShape() = default;
};
struct ISquare : IShape {
  static constexpr TGuid kGuid{2, 0, 0, {}};
  virtual int32_t QDCALL Width() = 0;

 protected:
  ~ISquare() = default;
};
struct INamed : IRefCounted {
  static constexpr TGuid kGuid{3, 0, 0, {}};
  virtual int32_t QDCALL Letters() = 0;

 protected:
  ~INamed() = default;
};

class TTile : public TRefCountedObject<TInterfaces<ISquare, INamed>, IShape> {
 public:
  explicit TTile(int& deaths) : deaths_(deaths) {}
  ~TTile() override {
    const TRef<ISquare> late(this);  // must not end it again
    ++deaths_;
  }
  int32_t QDCALL Sides() override { return 4; }
  int32_t QDCALL Width() override { return 7; }
  int32_t QDCALL Letters() override { return 5; }

 private:
  int& deaths_;
};

int32_t ReferencesOf(IRefCounted& object) {
  object.AddRef();
  return object.Release();
}

TEST(References, AnObjectAnswersForItsInterfacesAndTheirParents) {
  int deaths = 0;
  const TRef<TTile> tile = MakeRef<TTile>(deaths);
  ISquare& square = *tile;
  const struct {
    const char* row;
    TGuid guid;
    void* expected;
  } rows[] = {{"identity", IRefCounted::kGuid, &square},
              {"first", ISquare::kGuid, &square},
              {"parent of the first", IShape::kGuid, static_cast<IShape*>(&square)},
              {"second", INamed::kGuid, static_cast<INamed*>(tile.Get())},
              {"one it has not", IMail::kGuid, nullptr}};
  for (const auto& row : rows) {
    void* found = &deaths;
    const int32_t result = square.QueryInterface(row.guid, &found);
    EXPECT_EQ(found, row.expected) << row.row;
    EXPECT_EQ(result, row.expected ? kInterfaceFound : kNoInterface) << row.row;
    EXPECT_EQ(ReferencesOf(square), row.expected ? 2 : 1) << row.row;
    if (row.expected) square.Release();
  }
  EXPECT_EQ(static_cast<uint32_t>(kNoInterface), 0x80004002u);
  const TRef<INamed> named = tile.As<INamed>();
  EXPECT_EQ(named->Letters(), 5);
  EXPECT_EQ(named.As<IShape>()->Sides(), 4);
  EXPECT_EQ(named.As<IMail>(), nullptr);
  EXPECT_EQ(ReferencesOf(square), 2) << "tile and named";
}

TEST(References, CountLikeValues) {
  int deaths = 0;
  {
    TRef<ISquare> first = MakeRef<TTile>(deaths);
    TRef<ISquare> second = first, none;
    TRef<IShape> parent = first;
    EXPECT_EQ(ReferencesOf(*first), 3);
    TRef<ISquare> moved = std::move(second);
    EXPECT_EQ(second, nullptr);
    EXPECT_EQ(moved, first);
    moved = *&moved;
    EXPECT_EQ(ReferencesOf(*first), 3);
    first.Reset();
    moved = none;
    EXPECT_FALSE(moved);
    EXPECT_EQ(ReferencesOf(*parent), 1);
    EXPECT_EQ(deaths, 0);
    EXPECT_EQ(none.As<INamed>(), nullptr);
  }
  EXPECT_EQ(deaths, 1);
}

TEST(CurrentApp, IsHeldUntilReplacedOrTheRequestEnds) {
  const TRef<IQuardaApp> first = MakeRef<TTestAppBase>(), second = MakeRef<TTestAppBase>();
  {
    const TCurrentAppGuard guard;
    SetQuardaApp(first);
    EXPECT_EQ(GetQuardaApp(), first);
    EXPECT_EQ(ReferencesOf(*first), 2);
    SetQuardaApp(second);
    EXPECT_EQ(ReferencesOf(*first), 1);
  }
  EXPECT_EQ(GetQuardaApp(), nullptr);
  EXPECT_EQ(ReferencesOf(*second), 1);
}

}  // namespace
}  // namespace quarda
