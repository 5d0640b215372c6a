// Traffic logs, statistics and the red-alert record.
#include <CodePage.h>

#include "EngineFixture.h"

namespace quarda::test {
namespace {

class CountersTest : public TEngineTest {
 protected:
  CountersTest() {
    Plugin("Judge").execute = [this](IQuardaInstance&) { return !virus_; };
  }
  std::string Statistics() const { return Read(BasePath("Temp\\Statistic.txt")); }
  std::string Record() const { return Read(BasePath("Temp\\Quarda.ra")); }
  bool AlertLogged() const { return LogHas("!!! RedAlert !!!"); }
  /// A virus mail at a time of the day; returns how many times the record holds afterwards,
  /// negative when it raised the alarm.
  int VirusAt(int hour, int minute, int second = 0) {
    virus_ = true;
    clock_.now = {2004, 5, 17, hour, minute, second, 0};
    platform::RemoveFile(BasePath("Quarda.log"));
    Scan(Mail("in_1.inp"));
    const std::string record = Record();
    const int lines = static_cast<int>(std::count(record.begin(), record.end(), '\n'));
    return AlertLogged() ? -lines : lines;
  }
  bool virus_ = false;
};

TEST_F(CountersTest, StatisticsCountEveryScan) {
  Scan(Mail("in_1.inp"));
  EXPECT_EQ(Statistics(),
            "2004-05-17\r\n\r\nMails=1\r\nVirus=0\r\nInMails=1\r\nOutMails=0\r\nInVirus=0\r\n"
            "OutVirus=0\r\nRedAlerts=0\r\n");
  virus_ = true;
  Scan(Mail("in_1.inp"));
  Scan(Mail("a.exe"));
  Scan(Mail("out_1.inp"));
  EXPECT_EQ(Statistics(),
            "2004-05-17\r\n\r\nMails=3\r\nVirus=3\r\nInMails=2\r\nOutMails=1\r\nInVirus=1\r\n"
            "OutVirus=2\r\nRedAlerts=0\r\n");
  virus_ = false;
  Write(BasePath("Temp\\Statistic.txt"), "note\nMAILS=x\nInMails=2147483647\n=\n");
  Scan(Path("in_1.inp"));
  EXPECT_EQ(Statistics(), "note\r\nMails=1\r\nInMails=2147483647\r\n=\r\n");
}

TEST_F(CountersTest, TrafficLog) {
  Settings("[Logging]\r\nLogInOut=1\r\n");
  const std::string mail =
      "From: =?iso-8859-1?Q?J=F6rg?= <j@example.net>\r\nTo: a@example.com, b@example.com\r\n"
      "Subject: =?iso-8859-1?Q?Hi=0D=0A[forged?=\r\n\r\nText\r\n";
  Scan(Mail("in_1.inp", mail));
  const std::string line = "[2004-05-17 14:03]\t[J\xF6rg <j@example.net>]\t[Hi  [forged]\t[" +
                           std::to_string(mail.size()) + "]\t[0]\t[a@example.com;b@example.com]\t";
  EXPECT_EQ(Read(BasePath("QDInMails.log")), line + "\r\n");
  Scan(Mail("clean.txt"));
  EXPECT_EQ(Read(BasePath("QDInMails.log")), line + "\r\n");
  virus_ = true;
  Scan(Mail("bad.exe"));
  EXPECT_EQ(Read(BasePath("QDInMails.log")), line + "[VIRUS !!!]\r\n");
  Scan(Path("in_1.inp"));
  EXPECT_EQ(Read(BasePath("QDInMails.log")), line + "[VIRUS !!!]\r\n" + line + "[VIRUS !!!]\r\n");
  EXPECT_FALSE(platform::FileExists(BasePath("QDOutMails.log")));
}

TEST_F(CountersTest, RedAlertWithinTheSpan) {
  Settings("[Red Alert]\r\nVirusMailCount=3\r\nMinuteSpan=60\r\n");
  EXPECT_EQ(VirusAt(10, 0), 1);
  std::string value = "38124.4166";  // days since 1899, and the part of this one
  value[5] = platform::DecimalSeparator();
  EXPECT_TRUE(Record().starts_with(value)) << Record();
  EXPECT_EQ(VirusAt(10, 20), 2);
  EXPECT_EQ(VirusAt(10, 40), -1);
  EXPECT_NE(Statistics().find("RedAlerts=1"), std::string::npos);
  EXPECT_EQ(VirusAt(11, 20), 2);
  EXPECT_EQ(VirusAt(11, 39, 59), -1) << "59 minutes and 59 seconds are 59 minutes";
  EXPECT_EQ(VirusAt(12, 0), 2);
  EXPECT_EQ(VirusAt(12, 39, 59), 2) << "exactly 60 minutes are no alert, the window moves";
}

TEST_F(CountersTest, RedAlertAfterTheCountWasLowered) {
  Settings("[Red Alert]\r\nVirusMailCount=5\r\nMinuteSpan=1\r\n");
  for (int i = 0; i < 4; ++i) EXPECT_EQ(VirusAt(10 + i, 0), i + 1);
  Settings("[Red Alert]\r\nVirusMailCount=2\r\nMinuteSpan=1\r\n");
  EXPECT_EQ(VirusAt(14, 0), 4) << "each virus mail removes one old time";
  Settings("[Red Alert]\r\nVirusMailCount=1\r\n");
  virus_ = true;
  Scan(Path("in_1.inp"));
  EXPECT_FALSE(platform::FileExists(BasePath("Temp\\Quarda.ra")));
}

TEST_F(CountersTest, AnUnreadableRecordIsLogged) {
  Settings("[Red Alert]\r\nVirusMailCount=2\r\n");
  Mail("in_1.inp");
  platform::CreateFolders(BasePath("Temp"));
  for (const char* bad : {"soon", "", "1x", "nan", "1e999"}) {
    Write(BasePath("Temp\\Quarda.ra"), std::string(bad) + "\r\n");
    virus_ = true;
    platform::RemoveFile(BasePath("Quarda.log"));
    EXPECT_EQ(Scan(Path("in_1.inp")), 1) << bad;
    EXPECT_TRUE(LogHas("Error reading red alert file \"" + BasePath("Temp\\Quarda.ra") +
                       "\". EConvertError: "))
        << bad;
    EXPECT_FALSE(AlertLogged());
  }
}

}  // namespace
}  // namespace quarda::test
