// Reports of virus mails to the administrator, and the notices that take the mails' place.
#include <MailRead.h>

#include "EngineFixture.h"

namespace quarda::test {
namespace {

class InformTest : public TEngineTest {
 protected:
  InformTest() {
    Settings(
        "[Common]\r\nInformOnVirus=1\r\nAdminAddress=Admin@Home\r\n[Logging]\r\nLogMode=4\r\n");
    for (const char* file : {"a\\user@home", "z\\Admin@Home"}) {
      platform::CreateFolders(Path("mails\\") + file[0]);
      Write(Path("mails\\") + file, "");
    }
    Write(BasePath("QDVirusMail.txt"), "Bad: $VirusReason$ $VIRUS$\r\n\r\n");
    Plugin("Judge").execute = [](IQuardaInstance& scan) {
      scan.VirusReason(nullptr, "found");
      return false;
    };
  }
  int32_t ScanText(const std::string& text, const std::string& name = "in_1.inp") {
    platform::RemoveFile(BasePath("Quarda.log"));
    return Scan(Mail("mails\\" + name, text));
  }
  std::string Account() const { return NamesIn(Path("mails\\z\\*")); }
};

const char kVirus[] =
    "Message-ID: <1@x>\r\nTo: User <user@home>\r\nDate: Mon, 1 Jan 2004\r\n"
    "Subject: =?iso-8859-1?Q?a=0D=0AX-Bad:_1?=\r\nContent-Type: text/html; charset=x\r\n\r\n"
    "<b>EVIL</b>";
const char kFields[] =
    "Message-ID: <1@x>\r\nTo: User <user@home>\r\nDate: Mon, 1 Jan 2004\r\n"
    "Subject: =?iso-8859-1?Q?a=0D=0AX-Bad:_1?=\r\nContent-Type: text/html; charset=x\r\n";

/// The report with these texts in the places of its own.
std::string Report(const std::string& text, const std::string& mail) {
  std::string report =
      platform::ReadWholeFile(platform::WindowsPath(QD_TEST_DATA "/inform/report.txt"));
  report.replace(report.find("$TEXT$"), 6, text);
  return report.replace(report.find("$MAIL$"), 6, mail);
}

TEST_F(InformTest, ReportsTheMailAndLeavesANotice) {
  EXPECT_EQ(ScanText(kVirus), 0);
  EXPECT_EQ(Account(), "Admin@Home In_00001.mai ");
  EXPECT_EQ(Read(Path("mails\\z\\In_00001.mai")),
            Report("User <user@home> has received an virus.\r\nReason: found\r\n\r\n"
                   "original Mail-Header:\r\n" +
                       std::string(kFields),
                   kVirus + std::string("\r\n")));
  EXPECT_TRUE(LogHas("Debug\tInformOnVirus\tQDVirusAdminMail.txt does not exist.\r\n"));
  EXPECT_TRUE(LogHas("InformOnVirus\tFile replaced: " + Path("mails\\in_1.inp") + "\r\n"));
  TMail notice;
  notice.LoadFromFile(Path("mails\\in_1.inp"));
  EXPECT_EQ(notice.GetContentType(), "text/plain");
  EXPECT_TRUE(notice.GetSubject().starts_with("Quarda - Virus: a"));
  EXPECT_EQ(notice.GetTo(), "User <user@home>");
  EXPECT_EQ(notice.DecodedContent(), std::string("Bad: found $VIRUS$\r\n\r\n") +
                                         std::string(kFields).substr(0, sizeof kFields - 3));

  Write(BasePath("QDVirusAdminMail.txt"), "$VIRUSREASON$ $nope$ ");
  const std::string whole = std::string(kVirus) + "\r\n";
  EXPECT_EQ(ScanText(whole), 0);
  EXPECT_EQ(Read(Path("mails\\z\\In_00002.mai")),
            Report("found $nope$ " + std::string(kFields), whole));
  EXPECT_FALSE(LogHas("QDVirusAdminMail"));

  std::filesystem::current_path(Native() / "mails");
  Write("in_1.inp", whole);
  EXPECT_EQ(Scan("in_1.inp"), 0);
  EXPECT_EQ(Read(Path("mails\\z\\In_00003.mai")), Read(Path("mails\\z\\In_00002.mai")));
  std::filesystem::current_path("/");
}

TEST_F(InformTest, SomeMailsAreNotReported) {
  const auto to = [](const std::string& line) { return line + "\r\nX: y\r\n\r\ntext\r\n"; };
  const std::string list = "Admin Address \"Admin@Home\" is in the ";
  const struct {
    const char* row;
    std::string text;
    std::string name;
    std::string log;
  } kRows[] = {
      {"outgoing", kVirus, "out_1.inp", ""},
      {"a notification itself", to("Subject: Re: VIRUS: x"), "in_1.inp", ""},
      {"to", to("To: a@b, \"The Boss\" <ADMIN@home>"), "in_1.inp", list + "\"TO:\" list."},
      {"cc", to("Cc: xadmin@homestead"), "in_1.inp", list + "\"CC:\" list."},
      {"bcc", to("Bcc: admin@home\r\nTo: user@home"), "in_1.inp", list + "\"BCC:\" list."},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.row);
    EXPECT_EQ(ScanText(row.text, row.name), 1);
    EXPECT_EQ(Account(), "Admin@Home ");
    EXPECT_EQ(Read(Path("mails\\" + row.name)), row.text);
    EXPECT_TRUE(row.log.empty() || LogHas(row.log + " No user inform mail generated."));
    EXPECT_FALSE(LogHas("InformOnVirus\tpassed"));
  }
}

TEST_F(InformTest, NeedsItsAccountItsTemplateAndAFreeNumber) {
  platform::RemoveFile(BasePath("QDVirusMail.txt"));
  EXPECT_EQ(ScanText(kVirus), 1);
  EXPECT_TRUE(LogHas("Debug\tInformOnVirus\tQDVirusMail.txt does not exist."));
  Write(BasePath("QDVirusMail.txt"), "x");
  platform::RemoveFile(Path("mails\\z\\Admin@Home"));
  EXPECT_EQ(ScanText(kVirus), 1);
  EXPECT_TRUE(LogHas("Warning\tInformOnVirus\tAdmin Address \"Admin@Home\" does not exist. No"));
  EXPECT_EQ(Read(Path("mails\\in_1.inp")), kVirus);
}

TEST_F(InformTest, QuarantinedFilesMoveToTheAdministrator) {
  Mail("mails\\1.vir", "one");
  Mail("mails\\B.VIR", "two");
  platform::CreateFolders(Path("mails\\c.vir"));
  Mail("mails\\z\\IN_00002.MAI", "kept");
  Settings("[Common]\r\nAdminAddress=Admin@Home\r\n[Logging]\r\nLogMode=4\r\n");
  Plugin("Pass").confirm = [](const std::string&, bool, bool passed) { return passed; };
  EXPECT_EQ(ScanText(kVirus, "out_1.inp"), 0);
  EXPECT_EQ(Account(), "Admin@Home In_00001.mai IN_00002.MAI In_00003.mai ");
  EXPECT_EQ(Read(Path("mails\\z\\In_00001.mai")), "one");
  EXPECT_EQ(Read(Path("mails\\z\\In_00003.mai")), "two");
  EXPECT_TRUE(
      LogHas("Debug\tInformOnVirus\tMoved .vir file to the admin's mail account. "
             "(In_00003.mai)"));
}

}  // namespace
}  // namespace quarda::test
