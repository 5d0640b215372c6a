// What a header becomes when it is read, changed and written again.
#include <MailRead.h>
#include <Streams.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "MailTestTools.h"

namespace quarda {
namespace {

using TTexts = std::vector<std::string>;

void Load(THeader& header, std::string_view text) {
  TMemoryStream stream(text);
  TTextStreamer streamer(stream, TStreamerMode::kRead);
  header.LoadFromTextStreamer(streamer);
}

std::string Saved(THeader& header) {
  std::string text;
  TStringStream stream(text);
  TTextStreamer streamer(stream, TStreamerMode::kWrite);
  header.SaveToTextStreamer(streamer);
  streamer.Flush();
  return text.substr(0, text.size() - 2);  // without the empty line
}

// Every field as its name and value lines, read without making items.
TTexts Fields(THeader& header) {
  TTexts fields;
  for (size_t i = 0; i < header.GetCount(); ++i) {
    fields.emplace_back(header.NameOf(i));
    THeaderValues values(header, header.NameOf(i));
    while (values.Next()) fields.back() += "|" + std::string(values.Line());
  }
  return fields;
}

TTexts FieldsOfItems(THeader& header) {
  TTexts fields;
  for (size_t i = 0; i < header.GetCount(); ++i) {
    THeaderItem& item = header.GetItems(i);
    fields.emplace_back(item.GetName());
    for (size_t k = 0; k < item.GetCount(); ++k) {
      fields.back() += "|" + std::string(item.GetValues()[k]);
    }
  }
  return fields;
}

const struct {
  const char* row;
  const char* text;
  TTexts fields;
  const char* saved;
} kHeaders[] = {
    {"folded parameters",
     "Content-Type: text/plain;\r\n\tcharset=x\r\n\r\nbody",
     {"Content-Type|text/plain|charset=x"},
     "Content-Type: text/plain;\r\n\tcharset=x\r\n"},
    {"one line", "Subject: a; b\n", {"Subject|a|b"}, "Subject: a; b\r\n"},
    {"folded without parameters", "To: a,\r\n\tb\r\n", {"To|a,\tb"}, "To: a,\tb\r\n"},
    {"only the first line is trimmed", "X:  a \n  b \n", {"X|a  b "}, "X: a  b \r\n"},
    {"quotes",
     "D: attachment; filename=\"a;b\"\n",
     {"D|attachment|filename=\"a;b\""},
     "D: attachment; filename=\"a;b\"\r\n"},
    {"brackets and words",
     "A: a <b;c> d\nB: =?x?Q?a;b?=;c\n",
     {"A|a <b;c> d", "B|=?x?Q?a;b?=|c"},
     "A: a <b;c> d\r\nB: =?x?Q?a;b?=; c\r\n"},
    {"a word may close at once", "A: =?=;b\n", {"A|=?=|b"}, "A: =?=; b\r\n"},
    {"spans without an end",
     "A: \"b;c\nB: <b;c\nC: =?b;c\n",
     {"A|\"b;c", "B|<b;c", "C|=?b;c"},
     "A: \"b;c\r\nB: <b;c\r\nC: =?b;c\r\n"},
    {"other starts inside a span", "A: \"<\";b>\n", {"A|\"<\"|b>"}, "A: \"<\"; b>\r\n"},
    {"empty pieces and blanks", "A: ;; \t b ;;c;\n", {"A|b |c"}, "A: b ; c\r\n"},
    {"odd fields",
     "Empty:\r\nOrphan\r\n:x\r\n folded\r\nX-A : b\r\n",
     {"Empty", "Orphan", "X-A|b"},
     "Empty: \r\nOrphan: \r\nX-A: b\r\n"},
    {"nothing to continue", "\tx: y\nA: b\n", {"A|b"}, "A: b\r\n"},
    {"a colon in the value, a lone CR", "A:b:c\rd\n", {"A|b:c\rd"}, "A: b:c\rd\r\n"},
    {"ends without a line end", "A: b\r\n c", {"A|b c"}, "A: b c\r\n"},
    {"no header", "\r\nA: b\r\n", {}, ""},
};

TEST(Header, ReadsAndWrites) {
  for (const auto& row : kHeaders) {
    SCOPED_TRACE(row.row);
    ForEachKindOfStream(row.text, [&](TStream& stream) {
      for (const bool share : {true, false}) {
        THeader header;
        stream.SetPosition(0);
        TTextStreamer streamer(stream, TStreamerMode::kRead);
        header.LoadFromTextStreamer(streamer, share);
        EXPECT_EQ(Fields(header), row.fields);
        EXPECT_EQ(Saved(header), row.saved) << "as read";
        EXPECT_EQ(FieldsOfItems(header), row.fields);
        EXPECT_EQ(Saved(header), row.saved) << "from items";
        EXPECT_FALSE(header.GetModified());
      }
    });
    TStringList lines;
    lines.SetText(std::string_view(row.text));
    if (std::string_view(row.text).find("c\rd") != std::string_view::npos) continue;
    THeader header;
    header.LoadFromStrings(lines);
    EXPECT_EQ(Fields(header), row.fields);
    EXPECT_EQ(Saved(header), row.saved);
    THeader copy;
    copy.Assign(header);
    EXPECT_EQ(Fields(copy), row.fields);
    EXPECT_EQ(Saved(copy).find('\t') != std::string::npos, row.fields == TTexts{"To|a,\tb"})
        << "a copy is not folded";
    TStringList saved;
    header.SaveToStrings(saved);
    EXPECT_EQ(saved.Text(), row.saved);
  }
}

TEST(Header, RefusesBlankNames) {
  const std::string message = "\"\x01 \" ist kein g\xFCltiger Name f\xFCr ein Header-Element.";
  THeader header;
  header.Add("A", "b");
  const auto refused = [&](const auto& call) {
    try {
      call();
      return std::string("accepted");
    } catch (const EMailHeaderError& error) {
      return std::string(error.what());
    }
  };
  EXPECT_EQ(refused([&] { header.Add("\x01 ", "x"); }), message);
  EXPECT_EQ(refused([&] { header.Insert(0, "\x01 ", "x"); }), message);
  EXPECT_EQ(refused([&] { header.SetHeaderStr("\x01 ", "x"); }), message);
  EXPECT_EQ(Fields(header), TTexts{"A|b"});
  EXPECT_EQ(refused([&] { Load(header, "B: c\n\x01 : d\nE: f\n"); }), message);
  EXPECT_EQ(Fields(header), TTexts{"B|c"}) << "what stood before it";
}

TEST(Header, FindsTheFirstOfAName) {
  THeader header;
  Load(header, "Received: 1\nX: y\nRECEIVED: 2\n");
  EXPECT_EQ(header.IndexOf("received"), 0);
  EXPECT_EQ(header.IndexOf(header.GetItems(2)), 2);
  THeaderItem* const second = &header.GetItems(2);
  header.Delete("received");
  EXPECT_EQ(Fields(header), (TTexts{"X|y", "RECEIVED|2"}));
  EXPECT_EQ(header.GetHeader("Received"), second) << "an item keeps its address";
  header.Insert(0, "First", "");
  header.Replace("x", "z");
  second->Delete();
  EXPECT_EQ(Fields(header), (TTexts{"First", "X|z"}));
  EXPECT_THROW(header.Delete(2), EListError);
  EXPECT_THROW(header.GetItems(static_cast<size_t>(-1)), EListError);
  EXPECT_THROW(header.Insert(3, "a", "b"), EListError);
}

TEST(Header, KnowsWhenItChanged) {
  const struct {
    const char* row;
    void (*change)(THeader&);
    bool modified;
    const char* saved;
  } kRows[] = {
      {"same value", [](THeader& h) { h.SetHeaderStr("b", "c"); }, false, "A: x; y\r\nB: c\r\n"},
      {"same empty value",
       [](THeader& h) { h.Add("E", ""), h.SetModified(false), h.SetHeaderStr("E", ""); }, false,
       "A: x; y\r\nB: c\r\nE: \r\n"},
      {"first of two", [](THeader& h) { h.SetHeaderStr("a", "x"); }, true, "A: x\r\nB: c\r\n"},
      {"emptied", [](THeader& h) { h.SetHeaderStr("a", ""); }, true, "A: \r\nB: c\r\n"},
      {"own value", [](THeader& h) { h.GetItems(0).SetValue(h.GetItems(0).GetValues()[1]); }, true,
       "A: y\r\nB: c\r\n"},
      {"a value line", [](THeader& h) { h.GetItems(0).GetValues().SetValue("k", "v"); }, true,
       "A: x; y; k=v\r\nB: c\r\n"},
      {"values of another", [](THeader& h) { h.GetItems(1).SetValues(h.GetItems(0).GetValues()); },
       true, "A: x; y\r\nB: x; y\r\n"},
      {"split anew", [](THeader& h) { h.GetItems(1).SetValuesAsText(" p;q ; "); }, true,
       "A: x; y\r\nB: p; q \r\n"},
      {"looked at", [](THeader& h) { h.GetItems(0), h.GetHeaderStr("A"), h.GetHeader("Q"); }, false,
       "A: x; y\r\nB: c\r\n"},
  };
  for (const auto& row : kRows) {
    THeader header;
    Load(header, "A: x;y\nB: c\n");
    row.change(header);
    EXPECT_EQ(header.GetModified(), row.modified) << row.row;
    EXPECT_EQ(Saved(header), row.saved) << row.row;
    EXPECT_FALSE(header.GetModified()) << row.row;
  }
}

}  // namespace
}  // namespace quarda
