// The TNEF reader on real containers, and on built ones for each rule and each lie.
#include <DateText.h>
#include <Files.h>
#include <MailReadTnef.h>
#include <TnefBuilder.h>
#include <gtest/gtest.h>

namespace quarda {
namespace {

const std::string kStart = "\x78\x9F\x3E\x22\x05\x01";
const uint32_t kRend = 0x00069002, kData = 0x0006800F, kTitle = 0x00018010, kDate = 0x00038013,
               kProps = 0x00069005;

/// A record without data that claims a length.
std::string Claim(uint32_t id, uint32_t length) {
  return "\x02" + Little(id, 4) + Little(length, 4) + Little(0, 2);
}

std::string Rend() { return TnefRecord(2, kRend, "?"); }
std::string Title(const std::string& name) { return TnefRecord(2, kTitle, name); }
std::string Data(const std::string& data) { return TnefRecord(2, kData, data); }
std::string Props(uint32_t count, const std::string& list) {
  return TnefRecord(2, kProps, Little(count, 4) + list);
}
std::string Prop(uint32_t type, uint32_t id, const std::string& value) {
  return Little(type, 2) + Little(id, 2) + value;
}
std::string Sized(const std::string& value) {
  return Little(value.size(), 4) + value + std::string((4 - value.size() % 4) % 4, '\xEE');
}
std::string LongName(const std::string& name) {
  return Prop(0x1E, 0x3707, Little(1, 4) + Sized(name));
}
std::string Date(std::initializer_list<uint64_t> fields, uint32_t id = kDate) {
  std::string data;
  for (const uint64_t field : fields) data += Little(field, 2);
  return TnefRecord(2, id, data);
}

/// "name=data" or "name=data@date" for each attachment, "(size)" where it is not that of the data,
/// then "!error". The stream is gone by the time that the list is told.
std::string Load(std::unique_ptr<TStream> stream, TTnef& tnef) {
  std::string error;
  try {
    tnef.LoadFromStream(*stream);
  } catch (const EError& e) {
    error = std::string("!") + e.ClassName() + ": " + e.what();
  }
  stream.reset();
  std::string text;
  for (size_t i = 0; i < tnef.GetCount(); ++i) {
    const TTnefAttachment& item = tnef.GetItems(i);
    TMemoryStream saved;
    item.SaveToStream(saved);
    text += item.GetFileName() + "=" + std::string(saved.View());
    if (item.GetSize() != static_cast<int64_t>(saved.Size())) {
      text += "(" + std::to_string(item.GetSize()) + ")";
    }
    const auto& date = item.GetModifyDate();
    if (date) text += "@" + DateText(*date) + " " + TimeText(*date);
    text += ";";
  }
  return text + error;
}

std::string Load(const std::string& container) {
  TTnef tnef;
  return Load(std::make_unique<TMemoryStream>(container), tnef);
}

std::string DataPath(const std::string& name) {
  return platform::WindowsPath(QD_TEST_DATA) + "\\tnef\\" + name;
}

const char kTruncated[] = "!ETnefError: Unexpected end of data, input file may be truncated.";
const char kChecksum[] = "!ETnefError: Invalid checksum, input file may be corrupted.";

struct TRow {
  const char* row;
  std::string records, expected;
};

const TRow kRows[] = {
    {"nothing but signature and key", "", ""},
    {"message attributes are dropped", TnefRecord(1, kTitle, "a") + TnefRecord(1, kProps, "x"), ""},
    {"the delimiter closes, the next attribute opens",
     Rend() + Title("A~1") + Data("1") + Props(1, LongName("a.long")) + Rend() +
         Title(std::string("b\0x", 3)) + Data("22"),
     "a.long=1;b=22;"},
    {"delimiters alone open and close in turn", Rend() + Rend() + Rend(),
     "tnef-tmp.000=;tnef-tmp.001=;"},
    {"a delimiter of the message level", Title("a") + TnefRecord(1, kRend, "") + Title("b"),
     "a=;b=;"},
    {"names that are missing or empty",
     Data("1") + Rend() + Title(std::string("\0x", 2)) + Rend() + Title("c") +
         Props(1, LongName("")),
     "tnef-tmp.000=1;tnef-tmp.001=;tnef-tmp.002=;"},
    {"the later name and data win",
     Props(2, LongName("long") +
                  Prop(0x102, 0x3701, Little(2, 4) + Sized("first") + Sized("second"))) +
         Title("a") + Props(0, LongName("unread")),
     "a=first;"},
    {"fill bytes are skipped, not kept",
     Props(2, LongName("report.pdf") + Prop(0x102, 0x3701, Little(1, 4) + Sized("x"))),
     "report.pdf=x;"},
    {"no fill bytes at the end", Props(1, Prop(0x1E, 0x3707, Little(1, 4) + Little(1, 4) + "n")),
     "n=;"},
    {"values of every size are passed over",
     Props(9, Prop(2, 1, "12") + Prop(3, 1, "1234") + Prop(4, 1, "1234") + Prop(0xB, 1, "1234") +
                  Prop(5, 1, "12345678") + Prop(0x40, 1, "12345678") + Prop(0xD, 0x3701, "") +
                  Prop(0x1F, 0x3701, Little(0, 4)) + LongName("n")) +
         Data("1"),
     "n=1;"},
    {"fixed values count as values", Props(1, Prop(3, 0x3701, "1234")) + Title("a"), "a=1234;"},
    {"a leap day, whatever the type and the day of the week",
     Title("a") + Date({2004, 2, 29, 23, 59, 59, 99, 7}, 0x8013), "a=@2004-02-29 23:59:59;"},
    {"a short date", Title("a") + Date({2004, 3, 1, 12, 30, 0}),
     "a=;!ETnefError: date attribute in 32787 failed sanity check."},
    {"no such day", Title("a") + Date({2003, 2, 29, 1, 2, 3, 0}) + Title("b"),
     "a=;!EConvertError: '2003-02-29 01:02:03' is not a valid date and time"},
    {"an unknown level ends the walk", Title("a") + Rend() + Data("1") + TnefRecord(3, kData, "x"),
     "a=;tnef-tmp.001=1;!ETnefError: Invalid lvl type on attribute: 3"},
    {"a length of 0 or less is no data",
     Data("1") + Claim(kData, 0) + Rend() + Data("1") + Claim(kData, 0xFFFFFFFF),
     "tnef-tmp.000=;tnef-tmp.001=(-1);"},
    {"a length beyond the end", Title("a") + Claim(kData, 0x7FFFFFFF),
     std::string("a=;") + kTruncated},
    {"a sum of 70,000",
     "\x02" + Little(kData, 4) + Little(280, 4) + std::string(280, '\xFA') + Little(4464, 2),
     "tnef-tmp.000=" + std::string(280, '\xFA') + ";"},
    {"a wrong checksum, also where nothing is read",
     Title("a") + "\x01" + Little(9, 4) + Little(1, 4) + "x" + Little('x' + 1, 2),
     std::string("a=;") + kChecksum},
    {"more properties than data", Props(0xFFFFFFFF, LongName("n")) + Data("1"), "n=1;"},
    {"more values than data",
     Props(2, Prop(0x102, 0x3701, Little(0xFFFFFFFF, 4) + Sized("1st")) + LongName("lost")),
     "tnef-tmp.000=1st;"},
    {"a value larger than the data",
     Data("1") +
         Props(2,
               LongName("n") + Prop(0x102, 0x3701, Little(1, 4) + Little(0xFFFFFFFC, 4) + "abc")) +
         Rend() + Title("b"),
     "n=1;b=;"},
    {"lists cut off inside a number",
     TnefRecord(2, kProps, "\1") + Props(1, "\1") + Props(1, Prop(5, 0x3701, "1234567")) +
         Props(1, Prop(0x1E, 0x3707, "\1\1")) + Title("a"),
     "a=;"},
};

TEST(Tnef, FollowsTheRecords) {
  for (const TRow& r : kRows) {
    EXPECT_EQ(Load(kStart + r.records), r.expected) << r.row;
    std::string shifted = "abc" + kStart + r.records;
    std::unique_ptr<TStream> streams[] = {std::make_unique<TMemoryStream>(shifted),
                                          std::make_unique<TStringStream>(shifted)};
    for (auto& stream : streams) {
      stream->SetPosition(3);
      TTnef tnef;
      EXPECT_EQ(Load(std::move(stream), tnef), r.expected) << r.row << ", from the middle";
    }
  }
}

TEST(Tnef, RefusesDatesThatDoNotExist) {
  const std::vector<uint64_t> rows[] = {
      {0, 1, 1, 0, 0, 0},      {10000, 1, 1, 0, 0, 0},  {2004, 0, 1, 0, 0, 0},
      {2004, 13, 1, 0, 0, 0},  {2004, 257, 1, 0, 0, 0}, {2004, 4, 31, 0, 0, 0},
      {2004, 1, 257, 0, 0, 0}, {2003, 2, 29, 0, 0, 0},  {2004, 1, 1, 24, 0, 0},
      {2004, 1, 1, 0, 60, 0},  {2004, 1, 1, 0, 0, 60}};
  for (const auto& d : rows) {
    const std::string loaded = Load(kStart + Date({d[0], d[1], d[2], d[3], d[4], d[5], 1}));
    EXPECT_NE(loaded.find("!EConvertError"), loaded.npos) << testing::PrintToString(d);
  }
}

TEST(Tnef, RefusesWhatIsNoContainer) {
  const std::string other = "!ETnefError: Seems not to be a TNEF file";
  for (const char* start : {"", "\x78\x9F\x3E", "\x78\x9F\x3E\x32\x05\x01"}) {
    EXPECT_EQ(Load(start), other);
  }
  EXPECT_EQ(Load("\x78\x9F\x3E\x22\x05"), kTruncated);
  std::string damaged = platform::ReadWholeFile(DataPath("t6.tnef"));
  EXPECT_EQ(Load(damaged), other);
  damaged[3] = '\x22';
  TTnef tnef;
  Load(std::make_unique<TMemoryStream>(damaged), tnef);
  ASSERT_EQ(tnef.GetCount(), 2u);
  EXPECT_EQ(tnef.GetItems(0).GetFileName(), "zappa_av1.jpg");
  EXPECT_EQ(tnef.GetItems(1).GetSize(), 85805);
}

TEST(Tnef, NoticesEveryCut) {
  const std::string records[] = {Rend(), Title("a"), Data("12"), Date({2004, 3, 1, 1, 1, 1, 1}),
                                 Props(1, LongName("long"))};
  std::string whole = kStart;
  for (const std::string& record : records) {
    const std::string before = Load(whole);
    for (size_t cut = 1; cut < record.size(); ++cut) {
      EXPECT_EQ(Load(whole + record.substr(0, cut)), before + kTruncated) << whole.size() + cut;
    }
    whole += record;
  }
  EXPECT_EQ(Load(whole), "long=12@2004-03-01 01:01:01;");
}

TEST(Tnef, SumsDataOfEveryLength) {
  for (size_t size = 0; size < 200; ++size) {
    std::string data(size, '\xFF');
    EXPECT_EQ(Load(kStart + Data(data)), "tnef-tmp.000=" + data + ";");
    if (size == 0) continue;
    std::string record = Data(data);
    record[9 + size / 2] = '\xFE';
    EXPECT_EQ(Load(kStart + record), kChecksum) << size;
  }
}

TEST(Tnef, ReplacesTheListAndNumbersPastThreeDigits) {
  std::string container = kStart;
  for (int i = 0; i < 2 * 1001; ++i) container += Rend();
  TTnef tnef;
  Load(std::make_unique<TMemoryStream>(container), tnef);
  ASSERT_EQ(tnef.GetCount(), 1001u);
  EXPECT_EQ(tnef.GetItems(1000).GetFileName(), "tnef-tmp.1000");
  EXPECT_THROW(tnef.GetItems(1001), EListError);
  EXPECT_EQ(Load(std::make_unique<TMemoryStream>("no"), tnef).front(), '!');
}

std::string WithoutCr(std::string text) {
  std::erase(text, '\r');
  return text;
}

// The bodies of the messages and the objects drawn into them are not files.
TEST(Tnef, ReadsContainersOfRealClients) {
  const struct {
    std::string name, items;
  } rows[] = {
      {"t1", ""},
      {"t2", ""},
      {"t3", "Untitled Attachment 0;Untitled Attachment 0;"},
      {"t4", "AUTOEXEC.BAT 0;CONFIG.SYS 0;boot.ini 289;"},
      {"t5", "quick.doc 19968;quick.html 428;quick.pdf 18638;quick.txt 235;quick.xml 143;"},
  };
  const std::string saved = platform::TempFolder() + "quarda-tnef-saved";
  for (const auto& r : rows) {
    TTnef tnef;
    tnef.LoadFromFile(DataPath(r.name + ".tnef"));
    std::string items;
    for (size_t i = 0; i < tnef.GetCount(); ++i) {
      const TTnefAttachment& item = tnef.GetItems(i);
      items += item.GetFileName() + " " + std::to_string(item.GetSize()) + ";";
      EXPECT_TRUE(item.GetModifyDate()) << items;
      item.SaveToFile(saved);
      EXPECT_EQ(platform::ReadWholeFile(saved), item.GetData()) << items;
      if (item.GetSize() == 0) continue;
      EXPECT_EQ(WithoutCr(platform::ReadWholeFile(saved)),
                WithoutCr(platform::ReadWholeFile(
                    DataPath(r.name + ".expected\\" + item.GetFileName()))));
    }
    EXPECT_EQ(items, r.items) << r.name;
  }
  platform::RemoveFile(saved);
}

}  // namespace
}  // namespace quarda
