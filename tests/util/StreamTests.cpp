#include <PlatformError.h>
#include <TempFolder.h>
#include <Utils.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>

namespace quarda {
namespace {

/// Plays the same random calls on a stream and on a plain string.
void Compare(TStream& stream, std::string& truth, unsigned seed) {
  std::mt19937 random(seed);
  const auto below = [&](size_t limit) {
    return std::uniform_int_distribution<size_t>(0, limit - 1)(random);
  };
  size_t position = 0;
  for (int step = 0; step < 400; ++step) {
    const std::string data(below(40), static_cast<char>('a' + step % 26));
    std::string got(data.size(), '\0');
    const size_t rest = position < truth.size() ? truth.size() - position : 0;
    const size_t choice = below(4);
    if (choice == 0) stream.SetPosition(position = below(truth.size() + 20));
    if (choice == 1) {
      ASSERT_EQ(stream.Read(got.data(), got.size()), std::min(rest, got.size()));
      ASSERT_EQ(got.substr(0, rest), rest > 0 ? truth.substr(position, got.size()) : "");
      position += std::min(rest, got.size());
    }
    if (choice == 2) {
      stream.Write(data.data(), data.size());
      if (!data.empty()) truth.resize(std::max(truth.size(), position + data.size()));
      if (!data.empty()) truth.replace(position, data.size(), data);
      position += data.size();
    }
    if (choice == 3) {
      truth.resize(below(truth.size() + 30));
      stream.SetSize(truth.size());
      position = std::min(position, truth.size());
    }
    ASSERT_EQ(stream.Size(), truth.size());
    ASSERT_EQ(stream.Position(), position);
    ASSERT_EQ(stream.Content(), truth);
  }
}

TEST(Streams, BehaveLikeAString) {
  for (unsigned seed = 0; seed < 20; ++seed) {
    std::string truth = "start", text = truth;
    TMemoryStream memory{std::string_view(truth)};
    Compare(memory, truth, seed);
    truth = text;
    TStringStream string(text);
    Compare(string, truth, seed);
  }
}

TEST(Streams, ReplaceFilesAsAWholeAndLeaveSharedBlocksAlone) {
  TMemoryStream stream(std::string_view("shared text"));
  const TTextBlock block = stream.Block();
  stream.Write("SHARED", 6);
  EXPECT_EQ(block.View(), "shared text");
  EXPECT_EQ(stream.View(), "SHARED text");

  const TTempFolder folder;
  const std::string path = folder.Write("f.txt", "old");
  {
    TReplacingFileStream unfinished(path);
    unfinished.Write("new", 3);
  }
  EXPECT_EQ(platform::ReadWholeFile(path), "old");
  TReplacingFileStream finished(path);
  finished.Write("new", 3);
  EXPECT_THROW(finished.SetPosition(0), EError);
  EXPECT_THROW(finished.SetSize(0), EError);
  EXPECT_EQ(finished.Size(), 3u);
  finished.Commit();
  EXPECT_EQ(platform::ReadWholeFile(path), "new");

  TFileStream file(path, platform::TOpenMode::kRead);
  char buffer[8];
  file.SetPosition(1);
  EXPECT_EQ(file.Read(buffer, sizeof buffer), 2u);
  EXPECT_EQ(std::string_view(buffer, 2), "ew");
  EXPECT_EQ(file.Size(), 3u);
  TFileStream cut(path, platform::TOpenMode::kAppend);
  cut.SetPosition(3);
  cut.SetSize(2);
  EXPECT_EQ(cut.Position(), 2u);
  EXPECT_EQ(platform::ReadWholeFile(path), "ne");
  EXPECT_THROW(TFileStream(folder.Path("none"), platform::TOpenMode::kRead),
               platform::EPlatformError);
}

}  // namespace
}  // namespace quarda
