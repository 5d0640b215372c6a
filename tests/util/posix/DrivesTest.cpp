// Moves between drives, which on this system are made by the environment. On Windows a test has no
// second drive to move to.
#include <TempFolder.h>
#include <Utils.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace quarda {
namespace {

TEST(Files, MoveToAnotherDriveCopies) {
  const TTempFolder folder, drive;
  setenv("QUARDA_DRIVES", ("X=" + drive.Native().string()).c_str(), 1);
  EXPECT_TRUE(MoveFile(folder.Write("source", "text"), "X:\\new\\target"));
  EXPECT_EQ(drive.Read("new/target"), "text");
  EXPECT_FALSE(platform::FileExists(folder.Path("source")));
  unsetenv("QUARDA_DRIVES");
}

}  // namespace
}  // namespace quarda
