// Mutexes, memory blocks and message windows, shared with processes that die.
#include <Files.h>
#include <MessageWindow.h>
#include <NamedObjects.h>
#include <PlatformError.h>
#include <Process.h>
#include <Program.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace quarda::platform {
namespace {

class NamedObjects : public testing::Test {
 protected:
  /// Has another process do this to the objects of the test; it ends closing nothing.
  void InChild(const std::string& what) const {
    TProcess child(
        {QuoteArgument(WindowsPath(QD_TEST_PROGRAM)) + ' ' + what + ' ' + name_, {}, true});
    child.Wait(std::nullopt);
    EXPECT_EQ(child.ExitCode(), 0u) << what;
  }

  /// Other tests run at the same time.
  const std::string name_ = "quarda-test-" + std::to_string(ProcessId());
};

TEST_F(NamedObjects, LiveAsLongAsSomebodyHasThemOpen) {
  EXPECT_EQ(TNamedMemory(name_, 0, kMemoryAll).Address(), nullptr);
  {
    const TNamedMemory first(name_, 100, kMemoryAll);
    EXPECT_FALSE(first.Existed());
    static_cast<char*>(first.Address())[99] = 'x';
    const TNamedMemory whole(name_, 0, kMemoryRead);
    EXPECT_TRUE(whole.Existed());
    EXPECT_EQ(static_cast<char*>(whole.Address())[99], 'x');
    const TNamedMemory copy(name_, 100, kMemoryCopy);
    static_cast<char*>(copy.Address())[99] = 'y';
    EXPECT_EQ(static_cast<char*>(whole.Address())[99], 'x');
    EXPECT_THROW(TNamedMemory(name_, 100'000, kMemoryAll), EPlatformError);
    const TNamedMutex mutex(name_ + "x");
    EXPECT_FALSE(mutex.Existed());
    EXPECT_TRUE(TNamedMutex(name_ + "x").Existed());
  }
  EXPECT_FALSE(TNamedMutex(name_ + "x").Existed());
  // What a killed process leaves is no object.
  InChild("objects");
  EXPECT_FALSE(TNamedMutex(name_ + "x").Existed());
  EXPECT_EQ(TNamedMemory(name_, 0, kMemoryAll).Address(), nullptr);
  const TNamedMemory again(name_, 20, kMemoryAll);
  EXPECT_FALSE(again.Existed());
  EXPECT_EQ(static_cast<char*>(again.Address())[19], 0);
}

TEST_F(NamedObjects, MutexTellsOfADeadOwnerAndOfTimeGone) {
  TNamedMutex mutex(name_);
  EXPECT_EQ(mutex.Wait(0), TWaitResult::kOwned);
  std::thread([this] {
    EXPECT_EQ(TNamedMutex(name_).Wait(0), TWaitResult::kTimeOut);
    EXPECT_EQ(TNamedMutex(name_).Wait(1), TWaitResult::kTimeOut);
  }).join();
  mutex.Release();
  std::thread([this] { EXPECT_EQ(TNamedMutex(name_).Wait(0), TWaitResult::kOwned); }).join();
  InChild("mutex");
  EXPECT_EQ(mutex.Wait(0), TWaitResult::kAbandoned);
  mutex.Release();
  EXPECT_EQ(mutex.Wait(0), TWaitResult::kOwned);
}

TEST_F(NamedObjects, WindowAnswersItsMessages) {
  EXPECT_FALSE(MessageWindowExists(name_, "t"));
  EXPECT_FALSE(PostToWindow(name_, "t", kCloseMessage));
  EXPECT_FALSE(SendToWindow(name_, "t", kUserMessage));
  std::vector<uint32_t> seen;
  std::vector<std::optional<intptr_t>> replies;
  {
    TMessageWindow window(name_, "t", [&](TMessageWindow& self, uint32_t message) -> intptr_t {
      seen.push_back(message);
      if (message == kCreateMessage) self.StartTimer(1);
      if (message == kTimerMessage && seen.size() > 4) self.StopTimer();
      if (message == kCloseMessage) self.PostQuit();
      return -7;
    });
    EXPECT_TRUE(MessageWindowExists(name_, "t"));
    EXPECT_FALSE(MessageWindowExists(name_, "other"));
    EXPECT_THROW(TMessageWindow(name_, "t", [](TMessageWindow&, uint32_t) { return 0; }),
                 EPlatformError);
    int asked = 0;
    const auto twice = [&asked] { return ++asked < 2; };
    EXPECT_FALSE(SendToWindow(name_, "t", kUserMessage + 9, 1, twice)) << "nobody takes it up";
    EXPECT_EQ(asked, 2);
    std::thread others([&] {
      InChild("post");
      // What only the system may tell the handler is answered all the same.
      for (const uint32_t message :
           std::vector<uint32_t>{kTimerMessage, kCreateMessage, kUserMessage + 1}) {
        replies.push_back(SendToWindow(name_, "t", message));
      }
      PostToWindow(name_, "t", kCloseMessage);
    });
    window.Run();
    others.join();
  }
  EXPECT_EQ(replies, (std::vector<std::optional<intptr_t>>{0, 0, -7}));
  std::erase(seen, kTimerMessage);
  EXPECT_EQ(seen, (std::vector<uint32_t>{kCreateMessage, kUserMessage + 5, kUserMessage + 1,
                                         kCloseMessage, kDestroyMessage}));
  EXPECT_FALSE(MessageWindowExists(name_, "t"));
  // The name of a killed process is free again.
  InChild("window");
  EXPECT_FALSE(MessageWindowExists(name_, "t"));
  const TMessageWindow next(name_, "t", [](TMessageWindow&, uint32_t) { return 0; });
  EXPECT_TRUE(MessageWindowExists(name_, "t"));
}

}  // namespace
}  // namespace quarda::platform
