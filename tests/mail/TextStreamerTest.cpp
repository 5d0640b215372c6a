// Lines from memory, from strings and from blocks must be the same lines.
#include <Errors.h>
#include <TextStreamer.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "MailTestTools.h"

namespace quarda {
namespace {

std::vector<std::string> Lines(TStream& stream) {
  TTextStreamer streamer(stream, TStreamerMode::kRead);
  std::vector<std::string> lines;
  while (!streamer.IsEof()) lines.emplace_back(streamer.ReadLn());
  return lines;
}

// Offset, line and skipped bytes of every line that begins with "--".
std::vector<std::string> DashLines(TStream& stream) {
  TTextStreamer streamer(stream, TStreamerMode::kRead);
  std::vector<std::string> found;
  for (std::string skipped; streamer.ReadToDashes(&skipped); skipped.clear()) {
    found.push_back(std::to_string(streamer.LineStart()) + " " + std::string(streamer.LastLine()) +
                    " after " + skipped);
  }
  return found;
}

TEST(TextStreamer, SplitsAtLineFeedsOnly) {
  const struct {
    const char* text;
    std::vector<std::string> lines;
  } kRows[] = {{"a\r\nb\nc", {"a", "b", "c"}}, {"a\rb\n", {"a\rb"}},       {"\n\n", {"", ""}},
               {"a\r\r\nb\r", {"a\r", "b\r"}}, {"\r\n--x\n", {"", "--x"}}, {"", {}}};
  for (const auto& row : kRows) {
    ForEachKindOfStream(row.text, [&](TStream& stream) {
      EXPECT_EQ(Lines(stream), row.lines);
      stream.SetPosition(100);
      EXPECT_EQ(Lines(stream).size(), 0u) << "nothing stands behind the end";
    });
  }
}

TEST(TextStreamer, LinesAcrossBlocksStayWhole) {
  // Every position of a line end and of a boundary around the end of the first block.
  for (size_t filler = 24576 - 6; filler <= 24576 + 2; ++filler) {
    SCOPED_TRACE(filler);
    const std::string head = std::string(filler, 'x') + "\r\n";
    const std::string text = head + "--b\r\n-\n-x\n\n--\ntail";
    ForEachKindOfStream(text, [&](TStream& stream) {
      EXPECT_TRUE(Lines(stream) == (std::vector<std::string>{std::string(filler, 'x'), "--b", "-",
                                                             "-x", "", "--", "tail"}));
      stream.SetPosition(0);
      EXPECT_TRUE(DashLines(stream) ==
                  (std::vector<std::string>{std::to_string(filler + 2) + " --b after " + head,
                                            std::to_string(filler + 13) + " -- after -\n-x\n\n"}));
    });
    ForEachKindOfStream(head + "-", [&](TStream& stream) {
      TTextStreamer streamer(stream, TStreamerMode::kRead);
      std::string skipped;
      EXPECT_FALSE(streamer.ReadToDashes(&skipped));
      EXPECT_TRUE(skipped == head + "-");
    });
  }
}

template <class TAction>
void ExpectError(const char* message, TAction action) {
  try {
    action();
    ADD_FAILURE() << "no error";
  } catch (const EError& error) {
    EXPECT_STREQ(error.what(), message);
  }
}

TEST(TextStreamer, KeepsItsPlace) {
  ForEachKindOfStream("ab\r\ncd\nef", [](TStream& stream) {
    TTextStreamer streamer(stream, TStreamerMode::kRead);
    streamer.SetLine(2);
    EXPECT_EQ(streamer.LastLine(), "cd");
    EXPECT_EQ(streamer.GetPosition(), 7u);
    streamer.SetPosition(4);
    EXPECT_EQ(streamer.ReadLn(), "cd");
    EXPECT_EQ(streamer.ReadLn(), "ef");
    EXPECT_EQ(streamer.ReadLn(), "");
    EXPECT_EQ(streamer.LastLine(), "ef") << "the end of the input is no line";
    streamer.SetPosition(1);
    EXPECT_EQ(streamer.ReadLn(), "b");
    streamer.SetLine(9);
    EXPECT_EQ(streamer.LastLine(), "ef") << "fewer lines than asked for";
    ExpectError("TextStreamer was opened for read only.", [&] { streamer.Clear(); });
    ExpectError("TextStreamer was opened for read only.", [&] { streamer.Write("x"); });
  });
}

// Keeps the size of every write.
class TCountingStream final : public TMemoryStream {
 public:
  void Write(const void* data, size_t size) override {
    if (fails) throw EError("full");
    writes.push_back(size);
    TMemoryStream::Write(data, size);
  }
  std::vector<size_t> writes;
  bool fails = false;
};

TEST(TextStreamer, WritesWhatItWasGiven) {
  TCountingStream stream;
  std::string expected;
  {
    TTextStreamer streamer(stream, TStreamerMode::kWrite);
    streamer.Write("gone");
    streamer.Clear();
    for (size_t size : {1u, 24000u, 3000u, 100000u, 0u, 24576u, 7u}) {
      const std::string line(size, static_cast<char>('a' + size % 26));
      streamer.WriteLn(line);
      expected += line + "\r\n";
      EXPECT_EQ(streamer.GetPosition(), expected.size());
    }
    ExpectError("TextStreamer was opened for write only.", [&] { streamer.SetPosition(0); });
  }
  EXPECT_TRUE(stream.Content() == expected);
  for (size_t i = 0; i + 1 < stream.writes.size(); ++i) EXPECT_GE(stream.writes[i], 24576u);
  auto owned = std::make_unique<TCountingStream>();
  owned->fails = true;
  TTextStreamer lost(std::move(owned), TStreamerMode::kWrite);
  lost.Write("x");
  EXPECT_THROW(lost.Flush(), EError) << "who does not ask is not told";
}

}  // namespace
}  // namespace quarda
