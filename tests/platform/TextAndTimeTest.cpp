#include <Clock.h>
#include <CodePage.h>
#include <FilePattern.h>

#include <cmath>
#include <limits>

#include "TestFolder.h"

namespace quarda::platform {
namespace {

bool operator==(const TLocalTime& a, const TLocalTime& b) {
  return ToDosStamp(a) == ToDosStamp(b) && a.year == b.year && a.second == b.second &&
         a.millisecond == b.millisecond;
}

TEST(CodePage, PairsLettersOfWindows1252) {
  const std::string capitals = "AMZ\x8A\x8C\x8E\x9F\xC0\xC4\xD6\xD8\xDE";
  const std::string smalls = "amz\x9A\x9C\x9E\xFF\xE0\xE4\xF6\xF8\xFE";
  const std::string neither = "09@[`{\x80\x83\xAA\xB5\xD7\xDF\xF7";
  EXPECT_EQ(LowerAnsi(capitals + smalls + neither), smalls + smalls + neither);
  EXPECT_EQ(UpperAnsi(capitals + smalls + neither), capitals + capitals + neither);
  EXPECT_TRUE(SameAnsiText(capitals, smalls));
  int pairs = 0;
  for (int c = 0; c < 256; ++c) {
    const char small = LowerAnsi(static_cast<char>(c));
    EXPECT_EQ(LowerAnsi(small), small) << c;
    pairs += small != static_cast<char>(c);
  }
  EXPECT_EQ(pairs, 26 + 4 + 30);
}

TEST(CodePage, OrdersWithoutLetterCase) {
  const struct {
    const char *a, *b;
    int order;
  } kRows[] = {{"", "", 0},
               {"", "a", -1},
               {"abc", "ABC", 0},
               {"ab", "ABC", -1},
               {"b", "ABC", 1},
               {"_", "A", -1},
               {"z", "\xC4", -1},
               {"\xE4", "\xC4", 0},
               {"a", "\xE4", -1},
               {"\xDC"
                "b",
                "\xFC"
                "A",
                1}};
  for (const auto& r : kRows) {
    const int order = CompareAnsiText(r.a, r.b);
    EXPECT_EQ((order > 0) - (order < 0), r.order) << r.a << " " << r.b;
    EXPECT_EQ(SameAnsiText(r.a, r.b), r.order == 0) << r.a << " " << r.b;
  }
}

TEST(FilePattern, MatchesAsWindowsDoes) {
  const struct {
    const char *name, *pattern;
    bool fits;
  } kRows[] = {
      {"a.txt", "*.TXT", true},       {"a.txt", "?.txt", true},   {"ab.txt", "?.txt", false},
      {"readme", "*.*", true},        {"readme", "*", true},      {"readme", "*.", false},
      {"aXbXc", "a*x*c", true},       {"aXbXc", "a*x", false},    {"aab", "*ab", true},
      {"abab", "*ab?", false},        {"\xC4.x", "\xE4.*", true}, {"a", "", false},
      {"in_1.inp", "in_*.inp*", true}};
  for (const auto& r : kRows) {
    EXPECT_EQ(MatchesFilePattern(r.name, r.pattern), r.fits) << r.name << " " << r.pattern;
  }
  std::string stars;  // each star a choice: ends only if choices are not all tried
  for (int i = 0; i < 60; ++i) stars += "*a";
  EXPECT_FALSE(MatchesFilePattern(std::string(250, 'a'), stars + "b"));
}

TEST(Clock, CountsDaysBothWays) {
  const struct {
    TLocalTime time;
    double days;
  } kRows[] = {{{1899, 12, 30}, 0},
               {{1900, 1, 1}, 2},
               {{1900, 3, 1}, 61},
               {{1970, 1, 1}, 25569},
               {{2000, 2, 29, 12}, 36585.5},
               {{2004, 5, 8, 14, 4, 2, 400}, 38115.5861388888889},
               {{2107, 12, 31, 23, 59, 59, 999}, 75971.9999999884259},
               {{1899, 1, 1, 6}, -362.75}};
  for (const auto& r : kRows) {
    EXPECT_NEAR(ToDateTime(r.time), r.days, 1e-9) << r.days;
    EXPECT_TRUE(FromDateTime(r.days) == r.time) << r.days;
  }
  for (int day = -365; day < 76'000; ++day) {  // every millisecond would take too long
    const double days = day + (day & 1023) * 1234 / 86'400'000.0;
    ASSERT_EQ(ToDateTime(FromDateTime(days)), days);
  }
  EXPECT_EQ(FromDateTime(0.9999999999).day, 31);
  for (const double wild : {std::nan(""), 1e300, -1e300, std::numeric_limits<double>::infinity()}) {
    const TLocalTime time = FromDateTime(wild);
    EXPECT_TRUE(time.year >= 1 && time.year <= 9999 && time.hour < 24) << wild;
  }
}

TEST(Clock, PacksDosStamps) {
  const struct {
    const char* row;
    TLocalTime time;
    uint32_t stamp;
  } kRows[] = {{"odd second", {2004, 5, 8, 14, 4, 3, 999}, 0x30A87081},
               {"first", {1980, 1, 1}, 0x00210000},
               {"too early", {1979, 12, 31, 23}, 0x00210000},
               {"last", {2107, 12, 31, 23, 59, 58}, 0xFF9FBF7D},
               {"too late", {2108, 1, 1}, 0xFF9FBF7D}};
  for (const auto& r : kRows) {
    EXPECT_EQ(ToDosStamp(r.time), r.stamp) << r.row;
    EXPECT_EQ(ToDosStamp(FromDosStamp(r.stamp)), r.stamp) << r.row;
  }
  const struct {
    const char* row;
    TLocalTime from;
    int64_t units;
    TLocalTime to;
  } kMoves[] = {{"next unit", {2004, 5, 8, 14, 4, 2}, 1, {2004, 5, 8, 14, 4, 4}},
                {"back over midnight", {2004, 3, 1}, -1, {2004, 2, 29, 23, 59, 58}},
                {"over new year", {1999, 12, 31, 23, 59, 58}, 1, {2000, 1, 1}},
                {"before the first", {1980, 1, 1}, -1, {1980, 1, 1}},
                {"beyond the last", {2107, 12, 31}, INT64_MAX, {2107, 12, 31, 23, 59, 58}},
                {"far back", {2107, 12, 31}, INT64_MIN, {1980, 1, 1}}};
  for (const auto& r : kMoves) {
    EXPECT_EQ(AddToDosStamp(ToDosStamp(r.from), r.units), ToDosStamp(r.to)) << r.row;
  }
  for (const uint32_t hostile : {0u, 0xFFFFFFFFu}) {
    const TLocalTime time = FromDosStamp(AddToDosStamp(hostile, 1));
    EXPECT_TRUE(time.month >= 1 && time.month <= 12 && time.day >= 1 && time.hour < 24);
  }
}

TEST_F(TTestFolder, StampsOfFilesFollowTheClock) {
  const uint32_t before = AddToDosStamp(ToDosStamp(SystemClock().Now()), -1);
  Put("a");
  const uint32_t after = ToDosStamp(SystemClock().Now());
  const std::optional<uint32_t> stamp = FileStamp(Path("a"));
  ASSERT_TRUE(stamp.has_value());
  EXPECT_TRUE(*stamp >= before && *stamp <= after);
  const TLocalTime times[] = {{2004, 2, 29, 12, 30, 58}, {1980, 1, 2}, {2040, 7, 1, 1, 2, 4}};
  for (const TLocalTime& time : times) {
    EXPECT_TRUE(SetFileStamp(Path("a"), ToDosStamp(time)));
    EXPECT_EQ(FileStamp(Path("a")), ToDosStamp(time));
    EXPECT_EQ(FindFile(Path("a"))->stamp, ToDosStamp(time));
  }
  for (const uint32_t noDate : {0u, ToDosStamp({2001, 2, 29}), ToDosStamp({2001, 1, 1, 24})}) {
    EXPECT_FALSE(SetFileStamp(Path("a"), noDate)) << noDate;
  }
  EXPECT_FALSE(FileStamp(Path("b")).has_value());
  EXPECT_FALSE(SetFileStamp(Path("b"), after));
}

}  // namespace
}  // namespace quarda::platform
