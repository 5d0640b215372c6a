// What becomes of mails when the engine is killed, when calls fail, and when folders lie on
// different file systems. The calls are those of POSIX, and the killed engine a process made by
// fork.
#include <Encodings.h>
#include <FileFaults.h>
#include <PlatformError.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <vector>

#include "EngineFixture.h"

namespace quarda::test {
namespace {

const char kVirus[] = "To: user@home\r\nSubject: s\r\n\r\nEVIL\r\n";

/// The device that a path lies on; none for a path that does not exist.
dev_t DeviceOf(const std::filesystem::path& path) {
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0 ? info.st_dev : 0;
}

class LostFilesTest : public TEngineTest {
 protected:
  LostFilesTest() : other_("/dev/shm" / Native().filename()) {
    Settings(
        "[Common]\r\nInformOnVirus=1\r\nAdminAddress=admin@home\r\n[Logging]\r\nLogMode=4\r\n");
    Write(BasePath("QDVirusMail.txt"), "Bad.\r\n");
    std::filesystem::create_directories(Native() / "mails/z");
    Write(Path("mails\\z\\admin@home"), "");
    Plugin("Judge").execute = [this](IQuardaInstance& scan) {
      return Read(scan.GetArguments()->GetFilename().Str()).find("EVIL") == std::string::npos;
    };
  }
  ~LostFilesTest() override { std::filesystem::remove_all(other_); }

  /// Moves the administrator's account to another file system; false when there is none.
  bool MoveAccountAway() {
    const dev_t device = DeviceOf("/dev/shm");
    if (device == 0 || device == DeviceOf(Native())) return false;
    std::filesystem::create_directories(other_);
    std::ofstream(other_ / "admin@home");
    std::filesystem::remove_all(Native() / "mails/z");
    std::filesystem::create_symlink(other_, Native() / "mails/z");
    return true;
  }
  /// Name and content of every mail in the account.
  std::string Account() const {
    std::string mails;
    for (const auto& file : platform::FindFiles(Path("mails\\z\\*.mai"))) {
      mails += file.name + ":" + Read(Path("mails\\z\\") + file.name) + ";";
    }
    return mails;
  }
  void EmptyAccount() const {
    for (const auto& file : platform::FindFiles(Path("mails\\z\\In_*"))) {
      platform::RemoveFile(Path("mails\\z\\") + file.name);
    }
  }
  /// Puts two files into quarantine, one of them read-only.
  void Quarantine() const {
    for (const std::string name : {"1", "2"}) {
      platform::RemoveFile(Path("mails\\") + name + ".vir");
      Write(Path("mails\\") + name + ".vir", "quarantined " + name);
    }
    std::filesystem::permissions(Native() / "mails/1.vir", std::filesystem::perms::owner_read);
    std::filesystem::permissions(Native() / "mails/2.vir", std::filesystem::perms{0640});
  }
  const std::string moved_ = "In_00001.mai:quarantined 1;In_00002.mai:quarantined 2;";

 private:
  const std::filesystem::path other_;
};

TEST_F(LostFilesTest, KilledWhileItEmptiesTheQuarantine) {
  if (!MoveAccountAway()) GTEST_SKIP() << "no second file system";
  const std::string mail = Mail("mails\\out_1.inp");
  bool died = true;
  for (int n = 1; died; ++n) {
    SCOPED_TRACE(n);
    EmptyAccount();
    Quarantine();
    died = DiesAtFileCall(n, [&] { Scan(mail); });
    const std::string account = Account();
    for (const std::string name : {"1", "2"}) {
      const bool stays = platform::FileExists(Path("mails\\") + name + ".vir");
      EXPECT_TRUE(stays || account.find(":quarantined " + name + ";") != account.npos) << name;
    }
    EXPECT_TRUE(account == moved_ || moved_.starts_with(account) ||
                account.starts_with("In_00001.mai:quarantined 1;"))
        << account;
  }
  EXPECT_EQ(NamesIn(Path("mails\\*.vir")) + Account(), moved_);
  EXPECT_EQ(NamesIn(Path("mails\\z\\*.tmp")), "");
  const auto mode = std::filesystem::status(Native() / "mails/z/In_00002.mai").permissions();
  EXPECT_EQ(mode, std::filesystem::perms{0640}) << "who could read it still can";
}

TEST_F(LostFilesTest, OneFileThatStaysHoldsUpNoOther) {
  Quarantine();
  const std::string mail = Mail("mails\\out_1.inp");
  int renames = 0;
  const TFileFaults faults([&](std::string_view call) {
    return call == "renameat2" && ++renames <= 2 ? EACCES : 0;  // in place, and as a copy
  });
  Scan(mail);
  EXPECT_EQ(NamesIn(Path("mails\\*.vir")) + Account(), "1.vir In_00001.mai:quarantined 2;");
}

TEST_F(LostFilesTest, WhatCannotGoIsNotCopiedAgainAndAgain) {
  Quarantine();
  const std::string mail = Mail("mails\\out_1.inp");
  int unlinks = 0;
  const TFileFaults faults([&](std::string_view call) {
    const bool isCopied = platform::FileExists(Path("mails\\z\\In_00001.mai"));
    const bool isOriginal = call == "unlink"
                                ? isCopied && ++unlinks % 3 != 0  // tried twice
                                : !platform::FileExists(Path("mails\\z\\In_00001.tmp"));
    return isOriginal && (call == "unlink" || call == "renameat2") ? EACCES : 0;
  });
  Scan(mail);
  EXPECT_EQ(NamesIn(Path("mails\\*.vir")) + Account(), "1.vir 2.vir ");
}

// The report that is not on the disk must not be all that is left of the mail.
TEST_F(LostFilesTest, AReportThatIsNotOnTheDiskReplacesNoMail) {
  const std::string mail = Mail("mails\\in_1.inp", kVirus);
  int flushes = 0;
  const TFileFaults faults(
      [&](std::string_view call) { return call == "fsync" && ++flushes == 2 ? EIO : 0; });
  EXPECT_EQ(Scan(mail), 1);
  EXPECT_EQ(Read(mail) + Account(), kVirus);
}

TEST_F(LostFilesTest, ALinkToNothingHasItsName) {
  std::filesystem::create_symlink("nowhere", Native() / "mails/z/In_00001.mai");
  Quarantine();
  EXPECT_EQ(Scan(Mail("mails\\in_1.inp", kVirus)), 0);
  EXPECT_EQ(NamesIn(Path("mails\\*.vir")) + NamesIn(Path("mails\\z\\In*")),
            "In_00002.mai In_00003.mai In_00004.mai ");
}

TEST_F(LostFilesTest, TheFilesOfOtherEnginesStay) {
  int flushes = 0;
  const std::string mail = Mail("mails\\in_1.inp", kVirus);
  const TFileFaults faults([&](std::string_view call) {
    if (call == "fsync" && ++flushes == 2) {  // the report has its final name
      std::ofstream(Native() / "mails/z/In_00001.tmp") << "another report";
    }
    return 0;
  });
  Scan(mail);
  EXPECT_EQ(NamesIn(Path("mails\\z\\In*")), "In_00001.mai In_00001.tmp ");
}

TEST_F(LostFilesTest, NoNumberIsLeft) {
  MoveAccountAway();  // where files cost less
  for (int number = 1; number <= 99997; ++number) {
    char name[32];
    std::snprintf(name, sizeof name, "mails/z/In_%05d.mai", number);
    std::ofstream(Native() / name);
  }
  Quarantine();
  EXPECT_EQ(Scan(Mail("mails\\in_1.inp", kVirus)), 1);
  EXPECT_EQ(Read(Path("mails\\in_1.inp")), kVirus);
  EXPECT_EQ(NamesIn(Path("mails\\*.vir")) + NamesIn(Path("mails\\z\\*.tmp")), "1.vir 2.vir ");
  const std::string log = Read(BasePath("Quarda.log"));
  EXPECT_NE(log.find("Error\tInformOnVirus\tToo many mails in mail folder. No user inform mail "
                     "generated.\r\n"),
            log.npos);
  EXPECT_NE(log.find("InformOnVirus\tpassed"), log.npos);
}

std::string MailWith(const std::vector<std::string>& attachedMails) {
  std::string mail = "Subject: s\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n";
  for (const std::string& attached : attachedMails) {
    mail +=
        "--b\r\nContent-Disposition: attachment; filename=m.eml\r\n"
        "Content-Transfer-Encoding: base64\r\n\r\n" +
        TextEncode(attached, meBase64) + "\r\n";
  }
  return mail + "--b--\r\n";
}

TEST_F(LostFilesTest, AttachedMailsAreScannedWhateverBecomesOfTheMailType) {
  Settings("");
  const std::string mail = Mail("in_1.inp", MailWith({kVirus}));
  bool isLast = false;
  for (int first = 1; !isLast; ++first) {  // from which rename on all of them fail
    SCOPED_TRACE(first);
    int renames = 0;
    const TFileFaults faults([&](std::string_view call) {
      return call == "renameat2" && ++renames >= first ? EACCES : 0;
    });
    EXPECT_EQ(Scan(mail), 1);
    EXPECT_EQ(NamesIn(BasePath("Temp\\In_*")) + NamesIn(BasePath("Temp\\Quarda.0*")), "");
    isLast = renames < first;
    EXPECT_TRUE(!isLast || first > 2);
  }
}

TEST_F(LostFilesTest, EachAttachedMailTakesTheSameSteps) {
  Settings("");
  const auto steps = [this](int mails) {
    std::vector<std::string> attached;
    for (int i = 0; i < mails; ++i) {
      attached.push_back("Subject: " + std::to_string(i) + "\r\n\r\n");
    }
    const std::string mail = Mail("in_1.inp", MailWith(attached));
    int count = 0;
    const TFileFaults faults([&](std::string_view) { return ++count, 0; });
    EXPECT_EQ(Scan(mail), 0);
    return count;
  };
  const int few = steps(100);
  const int more = steps(200);
  EXPECT_GT(more - few, 100);
  EXPECT_LT(steps(5000) - few, 50 * (more - few));  // 49 times as many mails
}

// Takes the name for another engine as soon as nobody has it any more. Closes the pipe when
// somebody has it.
void TakeNameWhenFree(const std::string& path, int pipe) {
  while (!platform::FileExists(path)) ::usleep(10);
  ::close(pipe);
  while (true) {
    try {
      platform::TFile(path, platform::TOpenMode::kCreateNew).Write("another's", 9);
      return;
    } catch (const platform::EPlatformError&) {
    }
  }
}

TEST_F(LostFilesTest, AnAttachedMailKeepsItsNameWhileItIsScanned) {
  Settings("");
  const std::string name = BasePath("Temp\\In_00001.inp");
  const std::string text = MailWith({"Subject: s\r\n\r\n"});
  const std::string mail = Mail("in_1.inp", text);
  int pipe[2];
  ASSERT_EQ(::pipe(pipe), 0);
  const pid_t other = ::fork();
  if (other == 0) {
    ::alarm(30);
    TakeNameWhenFree(name, pipe[1]);
    ::_exit(0);
  }
  ::close(pipe[1]);
  Plugin("Slow").execute = [&](IQuardaInstance& scan) {
    char none;
    EXPECT_EQ(::read(pipe[0], &none, 1), 0);  // however late the other process is
    ::usleep(2000);
    const std::string content = Read(scan.GetArguments()->GetFilename().Str());
    return content.starts_with("Subject: s\r\n");
  };
  const TFileFaults slow([](std::string_view call) {  // lets the other process have its turn
    if (call == "renameat2") ::usleep(2000);
    return 0;
  });
  EXPECT_EQ(Scan(mail), 0);
  EXPECT_EQ(Read(mail), text);
  int status = -1;
  EXPECT_EQ(::waitpid(other, &status, 0), other);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(Read(name), "another's");
  ::close(pipe[0]);
}

}  // namespace
}  // namespace quarda::test
