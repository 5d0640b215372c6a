// The resident engine's answers and its shared memory; tests/scan/resident.sh runs it as a process.
#include <Circumstances.h>
#include <Files.h>
#include <NamedObjects.h>
#include <Program.h>
#include <ResidentEngine.h>
#include <SharedMMFMem.h>
#include <SharedRequest.h>
#include <gtest/gtest.h>

#include <cstring>
#include <thread>

#include "EngineFixture.h"

namespace quarda::test {
namespace {

constexpr uint32_t kAll = platform::kMemoryAll;

std::string ErrorOf(const char* name) {
  try {
    SharedOpenMem(name, kAll);
  } catch (const ESharedMemError& error) {
    return error.what();
  }
  return {};
}

TEST(SharedMemory, KeepsTheListOfOpenBlocks) {
  void* block = nullptr;
  EXPECT_FALSE(SharedOpenMem(block, "test-a", kAll));
  EXPECT_EQ(SharedOpenMem("test-a", kAll), nullptr);
  EXPECT_EQ(SharedGetMem(block, "test-a", 100, kAll), 0u);
  void* other = SharedAllocMem("test-b", 10, kAll);
  EXPECT_NE(other, nullptr);
  EXPECT_EQ(ErrorOf("test-a"), "Shared MMF name \"test-a\" already opened.");
  EXPECT_EQ(ErrorOf("a\\b"), "Invalid MMF name \"a\\b\"");
  EXPECT_EQ(ErrorOf(""), "Invalid MMF name \"\"");
  void* const wasBlock = block;
  EXPECT_TRUE(SharedFreeMem(block));
  EXPECT_EQ(block, nullptr);
  EXPECT_FALSE(SharedFreeMem(block));
  block = wasBlock;
  EXPECT_FALSE(SharedFreeMem(block)) << "closed already";
  EXPECT_TRUE(SharedCloseMem(other));
  EXPECT_EQ(SharedOpenMem("test-b", kAll), nullptr) << "nobody has it open any more";
}

TEST(SharedMemory, OpensWhatOthersHaveOpen) {
  const platform::TNamedMemory others("test-c", 50, kAll);
  static_cast<char*>(others.Address())[3] = 'x';
  void* block = SharedAllocMem("test-c", 50, kAll);
  EXPECT_EQ(static_cast<char*>(block)[3], 'x') << "only a new block is cleared";
  EXPECT_TRUE(SharedFreeMem(block));
  EXPECT_EQ(SharedGetMem(block, "test-c", 0, kAll), kSharedMemExisted);
  EXPECT_TRUE(SharedFreeMem(block));
}

class Resident : public TEngineTest {
 protected:
  Resident() : environment_{Path("base"), &clock_}, window_(record_, environment_) {}

  void Ask(std::string_view commandLine) {
    std::memset(record_.RequestCommandLine, 0, sizeof record_.RequestCommandLine);
    std::memcpy(record_.RequestCommandLine, commandLine.data(), commandLine.size());
  }

  TEngineEnvironment environment_;
  SharedEngineRecord record_{};
  TEngineWindow window_;
};

TEST_F(Resident, ScansOnlyAsTheAskingProcessWould) {
  Settings("[Subject Checks]\r\nBlockOnVirus=1\r\n[Virus Subjects]\r\nbad\r\n");
  const std::string mail = Mail("in_1.inp", "Subject: bad\r\n\r\nx\r\n");
  const std::string before = platform::CurrentFolder();
  const std::string process = platform::ProcessCircumstances(platform::ModulePath());
  TSharedRequest request{"quarda in_1.inp", {}, mail.substr(0, mail.rfind('\\'))};
  {
    const platform::TFolderVisit visit(request.folder);
    request.circumstances = platform::ScanCircumstances("in_1.inp", process);
  }
  const platform::TNamedMutex mutex(kRequestMutexName);
  for (int time = 0; time < 2; ++time) {  // twice: a message may be left of one who gave up
    if (time == 0) WriteRequest(record_, request);
    EXPECT_EQ(IsAcceptedRequest(record_, request), time == 1);
    EXPECT_EQ(window_.ServeRequest(0), 1);
    EXPECT_TRUE(IsAcceptedRequest(record_, request));
    EXPECT_EQ(platform::CurrentFolder(), before);
  }

  TSharedRequest another = request;
  another.line = "quarda in_2.inp";
  EXPECT_FALSE(IsAcceptedRequest(record_, another));
  TSharedRequest elsewhere = request;
  elsewhere.folder = before;
  TSharedRequest nowhere = request;
  nowhere.folder += "\\none";
  for (const TSharedRequest& refused : {another, elsewhere, nowhere}) {
    WriteRequest(record_, refused);
    EXPECT_EQ(window_.ServeRequest(0), kRequestRefused);
    EXPECT_FALSE(IsAcceptedRequest(record_, refused));
    EXPECT_EQ(platform::CurrentFolder(), before);
  }
  EXPECT_EQ(record_.RequestCount, 2) << "what was refused does not count";

  // A line written alone, over a request of the same length.
  WriteRequest(record_, request);
  std::memcpy(record_.RequestCommandLine, another.line.data(), another.line.size());
  EXPECT_EQ(ReadRequest(record_).circumstances, "");
  EXPECT_EQ(window_.ServeRequest(0), 0) << "served, though there is no such file here";

  // As long as the field has room; then no NUL is behind it.
  TSharedRequest longest = request;
  while (FitsRequest(longest)) longest.line += 'x';
  longest.line.pop_back();
  WriteRequest(record_, longest);
  EXPECT_TRUE(ReadRequest(record_) == longest);
  AcceptRequest(record_);
  EXPECT_TRUE(IsAcceptedRequest(record_, longest));
  EXPECT_EQ(std::string(record_.Reserved, sizeof record_.Reserved), std::string(3, '\0'));
}

TEST_F(Resident, EndsWhenNobodyAsksForTwoMinutes) {
  record_.IdleMinutes = 2;
  record_.LastActivity = platform::ToDateTime(clock_.now);
  clock_.now.minute += 2;
  EXPECT_FALSE(window_.IsIdle());
  clock_.now.millisecond += 10;
  EXPECT_TRUE(window_.IsIdle());
  record_.IdleMinutes = 3;
  EXPECT_FALSE(window_.IsIdle());
  clock_.now.hour -= 1;  // a clock that was set back
  EXPECT_TRUE(window_.IsIdle());
}

TEST_F(Resident, ServesOnlyThoseWhoHoldTheMutex) {
  const std::string mail = Mail("in_1.inp", "Subject: bad\r\n\r\nx\r\n");
  Ask("quarda \"" + mail + "\"");
  EXPECT_EQ(window_.ServeRequest(0), kRequestRefused);
  EXPECT_FALSE(platform::TNamedMutex(kRequestMutexName).Existed()) << "closed again";
  EXPECT_EQ(record_.RequestCount, 0);

  platform::TNamedMutex mutex(kRequestMutexName);
  EXPECT_EQ(window_.ServeRequest(0), 0);
  // The settings are read for each request.
  Settings("[Subject Checks]\r\nBlockOnVirus=1\r\n[Virus Subjects]\r\nbad\r\n");
  EXPECT_EQ(window_.ServeRequest(0), 1);
  EXPECT_EQ(record_.RequestCount, 2);
  EXPECT_EQ(record_.LastActivity, platform::ToDateTime(clock_.now));

  // A command line as long as the field has no NUL behind it.
  const std::string tail = " \"" + mail + "\"";
  Ask(std::string(sizeof record_.RequestCommandLine - tail.size(), 'q') + tail);
  EXPECT_EQ(window_.ServeRequest(0), 1);

  std::thread holder([&] {
    platform::TNamedMutex held(kRequestMutexName);
    held.Wait(0);
    std::thread([&] { EXPECT_EQ(window_.ServeRequest(1), kRequestRefused); }).join();
  });
  holder.join();
  // Nothing is scanned for one who died while he had the mutex.
  platform::TNamedMutex abandoned(kRequestMutexName);
  std::thread([&] { abandoned.Wait(0); }).join();
  EXPECT_EQ(window_.ServeRequest(0), kRequestRefused);
  EXPECT_EQ(record_.RequestCount, 3);
  EXPECT_EQ(window_.ServeRequest(0), 1);
}

}  // namespace
}  // namespace quarda::test
