// The folder in which this system keeps the objects that processes share by name.
#include <MessageWindow.h>
#include <NamedObjects.h>
#include <PlatformError.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <thread>
#include <vector>

#include "TestFolder.h"

namespace quarda::platform {
namespace {

class RuntimeFolder : public TTestFolder {
 protected:
  RuntimeFolder() { ::setenv("XDG_RUNTIME_DIR", Native("").c_str(), 1); }
  ~RuntimeFolder() override { ::unsetenv("XDG_RUNTIME_DIR"); }

  size_t CountObjects() const { return FindFiles(Path(name_ + "\\*")).size(); }

  const std::string name_ = "quarda-" + std::to_string(::geteuid());
};

TEST_F(RuntimeFolder, KeepsTheFilesOfMutexesOnly) {
  {
    const TNamedMutex mutex("m");
    const TNamedMemory memory("m", 10, kMemoryAll);
    EXPECT_EQ(CountObjects(), 2u);
  }
  EXPECT_EQ(CountObjects(), 1u);
}

TEST_F(RuntimeFolder, KeepsWhatAnotherProcessMadeMeanwhile) {
  std::optional<TNamedMemory> memory(std::in_place, "m", 10, kMemoryAll);
  const std::string folder = Native(name_).string();
  const std::string file = folder + "/m.memory";
  const int lock = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY);
  ASSERT_EQ(::flock(lock, LOCK_EX), 0);
  std::thread closing([&] { memory.reset(); });
  const int old = ::open(file.c_str(), O_RDWR);
  ASSERT_EQ(::flock(old, LOCK_EX), 0) << "given up, and waiting for the folder";
  ::unlink(file.c_str());
  ::close(old);
  Put(name_ + "/m.memory", "new");
  ::close(lock);
  closing.join();
  EXPECT_EQ(Content(name_ + "/m.memory"), "new");
}

TEST_F(RuntimeFolder, HoldsOneFileForAnyName) {
  const std::string longName(300, 'n');
  const std::vector<std::string> names = {"a/b", "a%2Fb", "..",     "../a",
                                          "A/B", "\xE4",  longName, longName + "n"};
  std::vector<TNamedMemory> opened;
  for (const std::string& name : names) {
    opened.emplace_back(name, 1, kMemoryAll);
    EXPECT_FALSE(opened.back().Existed()) << name;
    EXPECT_TRUE(TNamedMemory(name, 0, kMemoryAll).Existed()) << name;
    EXPECT_EQ(CountObjects(), opened.size()) << name;
  }
}

TEST_F(RuntimeFolder, OfOthersIsRefused) {
  std::filesystem::create_directory(Native(name_));
  std::filesystem::permissions(Native(name_), std::filesystem::perms(0755));
  EXPECT_THROW(TNamedMutex("m"), EPlatformError);
  std::filesystem::remove(Native(name_));
  std::filesystem::create_directory_symlink(Native(""), Native(name_));
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

TEST_F(RuntimeFolder, WindowCutsOffThoseWhoSayNothing) {
  TMessageWindow window("c", "t", [](TMessageWindow& self, uint32_t message) {
    if (message == kCloseMessage) self.PostQuit();
    return 5;
  });
  std::vector<int> silent;
  for (int i = 0; i < 100; ++i) silent.push_back(ConnectToWindow(Native(name_)));
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

TEST_F(RuntimeFolder, WindowTurnsStrangersAway) {
  if (::geteuid() != 0) GTEST_SKIP() << "nobody else can be tried";
  pid_t stranger = 0;
  int status = -1;
  TMessageWindow window("c", "t", [&](TMessageWindow& self, uint32_t message) {
    EXPECT_NE(message, kUserMessage);
    if (message == kTimerMessage && ::waitpid(stranger, &status, WNOHANG) == stranger) {
      self.PostQuit();
    }
    return 0;
  });
  // As if the folder did not keep strangers out.
  std::filesystem::permissions(Native(""), std::filesystem::perms::all);
  for (const auto& entry : std::filesystem::recursive_directory_iterator(Native(""))) {
    std::filesystem::permissions(entry.path(), std::filesystem::perms::all);
  }
  std::filesystem::permissions(Native(name_), std::filesystem::perms::all);
  stranger = ::fork();
  if (stranger == 0) {
    constexpr uid_t kNobody = 65534;
    if (::setuid(kNobody) != 0) ::_exit(2);
    const int connection = ConnectToWindow(Native(name_));
    const uint32_t packet[] = {kUserMessage, 1};
    int64_t reply = 0;
    ::send(connection, packet, sizeof packet, MSG_NOSIGNAL);
    ::_exit(connection >= 0 && ::recv(connection, &reply, sizeof reply, 0) <= 0 ? 0 : 1);
  }
  window.StartTimer(1);
  window.Run();
  EXPECT_EQ(status, 0);
}

TEST_F(RuntimeFolder, MayHaveAPathOfAnyLength) {
  const std::filesystem::path deep = Native(std::string(150, 'd'));
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
