// Mutexes, memory blocks and message windows, shared with processes that die. The children are made
// by the system's own call.
#include <MessageWindow.h>
#include <NamedObjects.h>
#include <PlatformError.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
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
  EXPECT_EQ(CountFiles(), 1u) << "the file of a mutex stays";
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

TEST_F(NamedObjects, AnyNameIsOneFileInTheFolder) {
  const std::string longName(300, 'n');
  const std::vector<std::string> names = {"a/b", "a%2Fb", "..",     "../a",
                                          "A/B", "\xE4",  longName, longName + "n"};
  std::vector<TNamedMemory> opened;
  for (const std::string& name : names) {
    opened.emplace_back(name, 1, kMemoryAll);
    EXPECT_FALSE(opened.back().Existed()) << name;
    EXPECT_TRUE(TNamedMemory(name, 0, kMemoryAll).Existed()) << name;
    EXPECT_EQ(CountFiles(), opened.size()) << name;
  }
}

TEST_F(NamedObjects, FolderOfOthersIsRefused) {
  std::filesystem::create_directory(Objects());
  std::filesystem::permissions(Objects(), std::filesystem::perms(0755));
  EXPECT_THROW(TNamedMutex("m"), EPlatformError);
  std::filesystem::remove(Objects());
  std::filesystem::create_directory_symlink(folder_, Objects());
  EXPECT_THROW(TNamedMutex("m"), EPlatformError);
}

/// Connected to the one window there is, and silent.
int ConnectToWindow(const std::filesystem::path& objects) {
  for (const auto& entry : std::filesystem::directory_iterator(objects)) {
    if (!entry.is_socket()) continue;
    sockaddr_un address{AF_UNIX, {}};
    entry.path().string().copy(address.sun_path, sizeof address.sun_path - 1);
    const int connection = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    EXPECT_EQ(::connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    return connection;
  }
  return -1;
}

TEST_F(NamedObjects, WindowAnswersItsMessages) {
  EXPECT_FALSE(MessageWindowExists("c", "t"));
  EXPECT_FALSE(PostToWindow("c", "t", kCloseMessage));
  EXPECT_FALSE(SendToWindow("c", "t", kUserMessage));
  std::vector<uint32_t> seen;
  std::vector<std::optional<intptr_t>> replies;
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
    int asked = 0;
    const auto twice = [&asked] { return ++asked < 2; };
    EXPECT_FALSE(SendToWindow("c", "t", kUserMessage + 9, 1, twice)) << "nobody takes it up";
    EXPECT_EQ(asked, 2);
    std::thread others([&] {
      InChild([] {  // a sender that dies before the reply, and one that says nothing
        MessageWindowExists("c", "t");
        PostToWindow("c", "t", kUserMessage + 5);
      });
      // What only the system may tell the handler is answered all the same.
      for (const uint32_t message :
           std::vector<uint32_t>{kTimerMessage, kCreateMessage, kUserMessage + 1}) {
        replies.push_back(SendToWindow("c", "t", message));
      }
      PostToWindow("c", "t", kCloseMessage);
    });
    window.Run();
    others.join();
  }
  EXPECT_EQ(replies, (std::vector<std::optional<intptr_t>>{0, 0, -7}));
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

TEST_F(NamedObjects, WindowCutsOffThoseWhoSayNothing) {
  TMessageWindow window("c", "t", [](TMessageWindow& self, uint32_t message) {
    if (message == kCloseMessage) self.PostQuit();
    return 5;
  });
  std::vector<int> silent;
  for (int i = 0; i < 100; ++i) silent.push_back(ConnectToWindow(Objects()));
  std::thread other([&] {
    EXPECT_EQ(SendToWindow("c", "t", kUserMessage), 5);
    PostToWindow("c", "t", kCloseMessage);
  });
  window.Run();
  other.join();
  char byte = 0;
  EXPECT_EQ(::recv(silent.front(), &byte, 1, MSG_DONTWAIT), 0) << "the oldest is cut off";
  EXPECT_EQ(::recv(silent.back(), &byte, 1, MSG_DONTWAIT), -1) << "the latest may still speak";
  for (const int connection : silent) ::close(connection);
}

TEST_F(NamedObjects, WindowLiesInFoldersOfAnyLength) {
  const std::filesystem::path deep = folder_ / std::string(150, 'd');
  std::filesystem::create_directory(deep);
  setenv("XDG_RUNTIME_DIR", deep.c_str(), 1);
  {
    const TMessageWindow window("c", "t", [](TMessageWindow&, uint32_t) { return 0; });
    EXPECT_TRUE(MessageWindowExists("c", "t"));
  }
  EXPECT_FALSE(MessageWindowExists("c", "t"));
}

}  // namespace
}  // namespace quarda::platform
