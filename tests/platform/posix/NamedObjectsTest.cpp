// Mutexes, memory blocks and message windows, shared with processes that die. The children are made
// by the system's own call.
#include <MessageWindow.h>
#include <NamedObjects.h>
#include <PlatformError.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <optional>
#include <thread>
#include <vector>

namespace quarda::platform {
namespace {

class NamedObjects : public testing::Test {
 protected:
  NamedObjects() {
    std::string name = (std::filesystem::temp_directory_path() / "quarda names-XXXXXX").string();
    folder_ = mkdtemp(name.data());
    setenv("XDG_RUNTIME_DIR", folder_.c_str(), 1);
  }
  ~NamedObjects() override {
    unsetenv("XDG_RUNTIME_DIR");
    std::filesystem::remove_all(folder_);
  }

  /// Runs the body in another process, which ends at once behind it, closing nothing.
  static void InChild(const std::function<void()>& body) {
    const pid_t child = fork();
    if (child == 0) {
      body();
      _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }

  std::filesystem::path Objects() const {
    return folder_ / ("quarda-" + std::to_string(geteuid()));
  }
  size_t CountFiles() const {
    return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(Objects()), {}));
  }

  std::filesystem::path folder_;
};

TEST_F(NamedObjects, LiveAsLongAsSomebodyHasThemOpen) {
  EXPECT_EQ(TNamedMemory("m", 0, kMemoryAll).Address(), nullptr);
  {
    const TNamedMemory first("m", 100, kMemoryAll);
    EXPECT_FALSE(first.Existed());
    static_cast<char*>(first.Address())[99] = 'x';
    const TNamedMemory whole("m", 0, kMemoryRead);
    EXPECT_TRUE(whole.Existed());
    EXPECT_EQ(static_cast<char*>(whole.Address())[99], 'x');
    const TNamedMemory copy("m", 100, kMemoryCopy);
    static_cast<char*>(copy.Address())[99] = 'y';
    EXPECT_EQ(static_cast<char*>(whole.Address())[99], 'x');
    EXPECT_THROW(TNamedMemory("m", 101, kMemoryAll), EPlatformError);
    const TNamedMutex mutex("m");
    EXPECT_FALSE(mutex.Existed());
    EXPECT_TRUE(TNamedMutex("m").Existed());
  }
  EXPECT_FALSE(TNamedMutex("m").Existed());
  EXPECT_EQ(CountFiles(), 1u) << "the lock stays";
  // What a killed process leaves is no object.
  InChild([] {
    new TNamedMutex("m");
    new TNamedMemory("m", 10, kMemoryAll);
  });
  EXPECT_FALSE(TNamedMutex("m").Existed());
  EXPECT_EQ(TNamedMemory("m", 0, kMemoryAll).Address(), nullptr);
  const TNamedMemory again("m", 20, kMemoryAll);
  EXPECT_FALSE(again.Existed());
  EXPECT_EQ(static_cast<char*>(again.Address())[19], 0);
}

TEST_F(NamedObjects, MutexTellsOfADeadOwnerAndOfTimeGone) {
  TNamedMutex mutex("m");
  EXPECT_EQ(mutex.Wait(0), TWaitResult::kOwned);
  std::thread([] {
    EXPECT_EQ(TNamedMutex("m").Wait(0), TWaitResult::kTimeOut);
    EXPECT_EQ(TNamedMutex("m").Wait(1), TWaitResult::kTimeOut);
  }).join();
  mutex.Release();
  std::thread([] { EXPECT_EQ(TNamedMutex("m").Wait(0), TWaitResult::kOwned); }).join();
  InChild([] { (new TNamedMutex("m"))->Wait(0); });
  EXPECT_EQ(mutex.Wait(0), TWaitResult::kAbandoned);
  mutex.Release();
  EXPECT_EQ(mutex.Wait(0), TWaitResult::kOwned);
}

TEST_F(NamedObjects, FolderOfOthersIsRefused) {
  std::filesystem::create_directory(Objects());
  std::filesystem::permissions(Objects(), std::filesystem::perms(0755));
  EXPECT_THROW(TNamedMutex("m"), EPlatformError);
  std::filesystem::remove(Objects());
  std::filesystem::create_directory_symlink(folder_, Objects());
  EXPECT_THROW(TNamedMutex("m"), EPlatformError);
}

TEST_F(NamedObjects, WindowAnswersItsMessages) {
  EXPECT_FALSE(MessageWindowExists("c", "t"));
  EXPECT_FALSE(PostToWindow("c", "t", kCloseMessage));
  EXPECT_FALSE(SendToWindow("c", "t", kUserMessage));
  std::vector<uint32_t> seen;
  std::optional<intptr_t> reply;
  {
    TMessageWindow window("c", "t", [&](TMessageWindow& self, uint32_t message) -> intptr_t {
      seen.push_back(message);
      if (message == kCreateMessage) self.StartTimer(1);
      if (message == kTimerMessage && seen.size() > 4) self.StopTimer();
      if (message == kCloseMessage) self.PostQuit();
      return -7;
    });
    EXPECT_TRUE(MessageWindowExists("c", "t"));
    EXPECT_FALSE(MessageWindowExists("c", "other"));
    EXPECT_THROW(TMessageWindow("c", "t", [](TMessageWindow&, uint32_t) { return 0; }),
                 EPlatformError);
    std::thread others([&] {
      InChild([] {  // a sender that dies before the reply, and one that says nothing
        MessageWindowExists("c", "t");
        PostToWindow("c", "t", kUserMessage + 5);
      });
      reply = SendToWindow("c", "t", kUserMessage + 1);
      PostToWindow("c", "t", kTimerMessage);  // not for others to send
      PostToWindow("c", "t", kCloseMessage);
    });
    window.Run();
    others.join();
  }
  EXPECT_EQ(reply, -7);
  std::erase(seen, kTimerMessage);
  EXPECT_EQ(seen, (std::vector<uint32_t>{kCreateMessage, kUserMessage + 5, kUserMessage + 1,
                                         kCloseMessage, kDestroyMessage}));
  EXPECT_FALSE(MessageWindowExists("c", "t"));
  // The name of a killed process is free again.
  InChild([] { new TMessageWindow("c", "t", [](TMessageWindow&, uint32_t) { return 0; }); });
  EXPECT_FALSE(MessageWindowExists("c", "t"));
  const TMessageWindow next("c", "t", [](TMessageWindow&, uint32_t) { return 0; });
  EXPECT_TRUE(MessageWindowExists("c", "t"));
}

}  // namespace
}  // namespace quarda::platform
