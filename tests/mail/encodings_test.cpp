// Transfer encodings and encoded words. A slow decoder for each encoding, written from its rules
// alone, judges the fast ones.
#include <BodyLines.h>
#include <Encodings.h>
#include <SimpleDecoders.h>
#include <StringList.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace quarda {
namespace {

using namespace std::literals;

constexpr TMailEncodingType kEncodings[] = {meUU, meXX, meBase64};

const struct {
  TMailEncodingType encoding;
  std::string_view plain, encoded;
} kKnown[] = {
    {meBase64, "", ""},
    {meBase64, "f", "Zg=="},
    {meBase64, "fo", "Zm8="},
    {meBase64, "foo", "Zm9v"},
    {meBase64, "foob", "Zm9vYg=="},
    {meBase64, "fooba", "Zm9vYmE="},
    {meBase64, "foobar", "Zm9vYmFy"},
    {meBase64, "\xFB\xFF\xBF\x14\xFB\x9C\x03\xD9\x7E", "+/+/FPucA9l+"},
    {meBase64,
     "Many hands make light work, and then there is one more line of it to fill wide blocks.",
     "TWFueSBoYW5kcyBtYWtlIGxpZ2h0IHdvcmssIGFuZCB0aGVuIHRoZXJlIGlzIG9uZSBtb3JlIGxpbmUgb2YgaXQgdG8g"
     "ZmlsbCB3aWRlIGJsb2Nrcy4="},
    {meUU, "Cat", "0V%T"},
    {meUU, "\0\0\0"sv, "````"},
    {meXX, "Cat", "Eq3o"},
};

TEST(Encodings, KnownTexts) {
  for (const auto& r : kKnown) {
    EXPECT_EQ(TextEncode(r.plain, r.encoding), r.encoded);
    EXPECT_EQ(TextDecode(r.encoded, r.encoding), r.plain);
  }
}

const struct {
  const char* row;
  TMailEncodingType encoding;
  std::string_view text, decoded;
} kIrregular[] = {
    {"less than a group", meBase64, "QUJ", ""},
    {"rest behind a group", meBase64, "QUJDRA", "ABC"},
    {"fill behind the last group", meBase64, "QUJD=", "AB"},
    {"two fills behind the last group", meBase64, "QUJD==", "A"},
    {"nothing but fills", meBase64, "==", ""},
    {"one fill alone", meBase64, "=", ""},
    {"fill in the middle is a zero", meBase64, "QQ==QUJD", "A\0\0ABC"sv},
    {"three fills", meBase64, "Q===", "@"},
    {"foreign characters are zeros", meBase64, "Q \xC1-QUJD", "@\0\0ABC"sv},
    {"blank is zero", meUU, "0V%T    ", "Cat\0\0\0"sv},
    {"lower case is foreign", meUU, "abc`", "\0\0\0"sv},
};

TEST(Encodings, IrregularTexts) {
  for (const auto& r : kIrregular) EXPECT_EQ(TextDecode(r.text, r.encoding), r.decoded) << r.row;
}

TEST(Encodings, SmallBufferIsRefused) {
  char buffer[8] = "untouch";
  for (const TMailEncodingType encoding : kEncodings) {
    size_t capacity = 7;
    EXPECT_FALSE(BufferEncode("abcd", 4, buffer, capacity, encoding));
    capacity = 5;
    EXPECT_FALSE(BufferDecode("QUJDQUJD", 8, buffer, capacity, encoding));
    EXPECT_STREQ(buffer, "untouch");
    TStringList lines;
    lines.SetText("QUJDQUJDQUJDQUJDQUJDQUJDQUJDQUJDQUJDQUJD\r\nQUJD");
    std::string exact(32, '.');
    capacity = exact.size();
    EXPECT_FALSE(DecodeLines(TBodyLines(lines), exact.data(), capacity, encoding));
  }
}

class TRandomText {
 public:
  size_t Number(size_t limit) { return std::uniform_int_distribution<size_t>(0, limit)(random_); }
  /// Characters of the pool; some of them any character at all.
  std::string Text(size_t size, std::string_view pool, size_t foreignPercent) {
    std::string text(size, '\0');
    for (char& c : text) {
      c = Number(99) < foreignPercent ? static_cast<char>(Number(255))
                                      : pool[Number(pool.size() - 1)];
    }
    return text;
  }

 private:
  std::mt19937 random_{20240229};
};

// Lines of one length as mailers write them, or of all lengths.
TStringList CutIntoLines(std::string_view text, size_t column, TRandomText& random) {
  TStringList lines;
  while (!text.empty()) {
    const size_t wanted = column > 0 ? column : random.Number(100);
    const size_t size = std::min(wanted, text.size());
    lines.Add(text.substr(0, size));
    text.remove_prefix(size);
  }
  return lines;
}

std::string Decoded(TBodyLines lines, TMailEncodingType encoding) {
  std::string target(CalcDecodeBufSize(lines.CountCharacters()), '.');  // the sanitizer watches
  size_t length = target.size();
  EXPECT_TRUE(DecodeLines(lines, target.data(), length, encoding));
  return target.substr(0, length);
}

// A text is walked over as the list that it would be split into.
void CheckUnsplit(const TStringList& lines, TMailEncodingType encoding, TRandomText& random) {
  std::string text;
  for (size_t i = 0; i < lines.Count(); ++i) {
    text.append(lines[i]).append(random.Number(3) > 0 ? "\r\n" : "\n");
  }
  text.resize(text.size() - random.Number(std::min<size_t>(text.size(), 3)));
  TStringList list;
  for (std::string_view rest = text; !rest.empty();) list.AddSlice(TakeLine(rest));
  const TBodyLines split(list), unsplit(text);
  ASSERT_EQ(unsplit.CountLines(), list.Count());
  ASSERT_EQ(unsplit.LastTwo(), split.LastTwo());
  std::string joined(unsplit.Join("||", nullptr), '.');
  unsplit.Join("||", joined.data());
  ASSERT_EQ(joined, list.SeparateText("||"));
  ASSERT_EQ(Decoded(unsplit, encoding), Decoded(split, encoding));
}

void CheckDecoders(const std::string& text, TMailEncodingType encoding, size_t column,
                   TRandomText& random) {
  const std::string expected = simple::Decode(text, encoding);
  ASSERT_EQ(TextDecode(text, encoding), expected) << text.size();
  const TStringList lines = CutIntoLines(text, column, random);
  ASSERT_EQ(Decoded(TBodyLines(lines), encoding), expected)
      << text.size() << " in columns of " << column;
  CheckUnsplit(lines, encoding, random);
}

TEST(Encodings, FastDecodersFollowTheRules) {
  TRandomText random;
  for (const TMailEncodingType encoding : kEncodings) {
    const std::string alphabet(simple::Alphabet(encoding));
    for (size_t size = 0; size <= 300; ++size) {
      for (const size_t column : {0u, 4u, 60u, 76u, 77u})
        CheckDecoders(random.Text(size, alphabet, size % 3 * 5), encoding, column, random);
    }
    for (const size_t foreign : {0u, 1u, 50u}) {
      const std::string text = random.Text(50000 + random.Number(9), alphabet, foreign);
      for (const size_t column : {0u, 1u, 31u, 64u, 76u, 9000u})
        CheckDecoders(text + "==", encoding, column, random);
    }
  }
}

TEST(Encodings, EveryCharacterInEveryPlace) {
  TRandomText random;
  for (int c = 0; c < 256; ++c) {
    for (size_t place = 0; place < 44; ++place) {
      std::string text(44, 'k');
      text[place] = static_cast<char>(c);
      CheckDecoders(text, meBase64, 44, random);
    }
  }
}

TEST(Encodings, RoundTrip) {
  TRandomText random;
  for (const TMailEncodingType encoding : kEncodings) {
    for (size_t size = 0; size < 200; ++size) {
      const std::string text = random.Text(size, "a", 100);
      const std::string encoded = TextEncode(text, encoding);
      EXPECT_EQ(encoded.size(), CalcEncodeBufSize(size));
      // "=" is also a digit of this alphabet: at the end it counts as fill.
      const bool endsInDigit = encoding == meUU && size % 3 == 0 && encoded.ends_with('=');
      EXPECT_EQ(TextDecode(encoded, encoding), text.substr(0, size - (endsInDigit ? 1 : 0)));
    }
  }
}

const struct {
  std::string_view text, decoded, header;
} kQuotedPrintable[] = {
    {"a=3Db", "a=b", "a=b"},        {"a=\r\nb", "ab", "ab"},
    {"a= \r\nb", "ab", "ab"},       {"a=\n=3Db", "a3Db", "a3Db"},
    {"a=\r\r\n==\nb", "ab", "ab"},  {"a=  b", "a b", "a b"},
    {"x=zz=4", "x=zz=4", "x=zz=4"}, {"x==41", "x=A", "x=A"},
    {"x=4=41", "x=4A", "x=4A"},     {"=e4=E4=eg", "\xE4\xE4=eg", "\xE4\xE4=eg"},
    {"a_b=5F", "a_b_", "a b_"},     {"=00a\0b"sv, "\0a"sv, "\0a"sv},
    {"a=\0b"sv, "a=", "a="},        {"a=", "a=", "a="},
};

TEST(QuotedPrintable, KnownTexts) {
  for (const auto& r : kQuotedPrintable) {
    EXPECT_EQ(QuotedPrintableToAnsi(r.text, false), r.decoded) << r.text;
    EXPECT_EQ(QuotedPrintableToAnsi(r.text, true), r.header) << r.text;
  }
  EXPECT_EQ(AnsiToQuotedPrintable("a_b c=d\xE9\r\n\t\x7F?", true), "a=5Fb_c=3Dd=E9\r\n\t\x7F?");
  EXPECT_EQ(AnsiToQuotedPrintable("a_b c=d\x80", false), "a_b c=3Dd=80");
}

void CheckQuotedLines(TBodyLines lines, const std::string& joined) {
  const std::string expected = simple::DecodeQuoted(joined, false);
  ASSERT_EQ(DecodeQuotedPrintableLines(lines), expected);
  ASSERT_EQ(DecodeQuotedPrintableLines(lines, nullptr, 0), expected.size());
  std::string target(expected.size() / 2, '.');
  ASSERT_EQ(DecodeQuotedPrintableLines(lines, target.data(), target.size()), expected.size());
  ASSERT_EQ(target, expected.substr(0, target.size()));
  const std::string behind(64, '.');
  target = std::string(expected.size(), '\0') + behind;
  ASSERT_EQ(DecodeQuotedPrintableLines(lines, target.data(), SIZE_MAX), expected.size());
  ASSERT_EQ(target, expected + behind);
}

// The lines of a text that nobody has split, joined with CR LF.
std::string Joined(TBodyLines lines) {
  std::string joined(lines.Join("\r\n", nullptr), '\0');
  lines.Join("\r\n", joined.data());
  return joined;
}

void CheckQuotedPrintable(const std::string& text) {
  for (const bool headerMode : {false, true}) {
    ASSERT_EQ(QuotedPrintableToAnsi(text, headerMode), simple::DecodeQuoted(text, headerMode));
  }
  CheckQuotedLines(TBodyLines(text), Joined(TBodyLines(text)));
  TStringList lines;
  lines.SetText(text + "\n");
  CheckQuotedLines(TBodyLines(lines), lines.SeparateText("\r\n"));
}

// "~" stands for a CR LF.
std::string WithLineEnds(std::string text) {
  for (size_t at = 0; (at = text.find('~', at)) != text.npos;) text.replace(at, 1, "\r\n");
  return text;
}

TEST(QuotedPrintable, FastDecodersFollowTheRules) {
  TRandomText random;
  const std::string plain(60, 'a');
  for (const std::string& pool :
       {plain + "=34eE_ \r\n~", "=4\r\n _x~"s, plain + "==~~", "=~4"s, plain}) {
    for (size_t size = 0; size <= 300; ++size)
      CheckQuotedPrintable(WithLineEnds(random.Text(size, pool, 0)));
    CheckQuotedPrintable(WithLineEnds(random.Text(40000, pool, 0)));  // across the ends of blocks
    CheckQuotedPrintable(random.Text(9000, pool, 1));                 // a NUL somewhere
  }
  for (size_t size = 8180; size < 8200; ++size) {
    for (const char* escape : {"=41=42", "=\n\n==x", "==41"})
      CheckQuotedPrintable(std::string(size, 'a') + escape);
  }
}

const struct {
  std::string_view value, decoded;
} kWords[] = {
    {"Hello", "Hello"},
    {"=?ISO-8859-1?Q?a_b?= =?utf-8?B?Yw==?=", "a b c"},
    {"x =?iso?Q?y", "x iso?Q?y"},
    {"x =?iso?Q", "x iso?Q"},
    {"x =?iso", "x iso"},
    {"=?", ""},
    {"=?a?q?=E4?=b=?a?b?Yw==?=c",
     "\xE4"
     "bcc"},
    {"=?a?x?a_b?=", "a_b"},
    {"=?a?Qq?a_b?=", "a b"},
    {"=?a??a_b?=", "a_b"},
    {"=?a?Q?\?=b", "b"},
    {"=?a?Q?=b", "a?Q?=b"},
    {"=?a?Q?b?=c=?d", "bcd"},
    {"=?a?Q?b\0c?=d"sv, "bd"},
    {"a\r\n =?x?Q?b?=", "a\r\n b"},
};

TEST(EncodedWords, Decode) {
  for (const auto& r : kWords) EXPECT_EQ(DecodeHeader(r.value), r.decoded) << r.value;
}

TEST(EncodedWords, Encode) {
  EXPECT_EQ(EncodeHeader("Hello \x7F_=?"), "Hello \x7F_=?");
  EXPECT_EQ(EncodeHeader("a b\xE4"), "=?iso-8859-1?Q?a_b=E4?=");
  EXPECT_EQ(EncodeHeader("a\tb"), "=?iso-8859-1?Q?a\tb?=");
  EXPECT_EQ(EncodeHeader("\x80?"), "=?iso-8859-1?Q?=80?\?=");
  EXPECT_EQ(DecodeHeader(EncodeHeader("\xFF=_ \x1F")), "\xFF=_ \x1F");
}

// Each would take minutes if a step looked at the rest of the value again.
TEST(EncodedWords, HugeValues) {
  for (const char* piece : {"=?", "=?a?", "=?a?b?", "=?a?q?=?=", "?=", "=?a?Q?b?="}) {
    std::string value;
    while (value.size() < 2000000) value += piece;
    EXPECT_LE(DecodeHeader(value).size(), value.size());
  }
}

}  // namespace
}  // namespace quarda
