// Transfer encodings and encoded words on known texts; fuzz/encodings.cpp compares the fast
// decoders with slow ones.
#include <BodyLines.h>
#include <Encodings.h>
#include <StringList.h>
#include <gtest/gtest.h>

#include <string>

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
