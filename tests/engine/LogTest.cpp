#include <EngineLog.h>
#include <Program.h>

#include "EngineFixture.h"

namespace quarda::test {
namespace {

class LogTest : public TEngineTest {
 protected:
  /// Scans a mail with one plug-in that logs; the settings are those of [Logging].
  void ScanLogging(const std::string& settings, const std::string& mail,
                   std::function<void(IQuardaInstance&, IPlugin*)> log) {
    Settings("[Logging]\r\n" + settings);
    TFakePlugin& plugin = Plugin("Probe");
    plugin.library = platform::ModulePath();
    plugin.execute = [&plugin, log](IQuardaInstance& scan) {
      log(scan, &plugin);
      return true;
    };
    Scan(mail);
  }
};

TEST_F(LogTest, SingleLineLayout) {
  ScanLogging("LogMode=1\r\n", Mail("in_12.inp"), [](IQuardaInstance& scan, IPlugin* plugin) {
    scan.LogWarn(plugin, "Virus\xFC found");
    scan.LogOK(plugin, "passed");
    scan.LogError(nullptr, "bad");
    scan.Log(plugin, -7, "always");
  });
  EXPECT_EQ(Log(),
            "2004-05-17\t14:03:59\tIN\tin_12.inp\tWarning\tProbe\tVirus\xFC found\r\n"
            "2004-05-17\t14:03:59\tIN\tin_12.inp\tError\t\tbad\r\n"
            "2004-05-17\t14:03:59\tIN\tin_12.inp\tError\tProbe\talways\r\n");
}

TEST_F(LogTest, NamesFileTypeAndClampsPriority) {
  ScanLogging("LogMode=99\r\n", Mail("x.bin"), [](IQuardaInstance& scan, IPlugin*) {
    scan.Log(nullptr, 99, "odd");
    scan.Log(nullptr, 100, "filtered");
  });
  EXPECT_NE(Log().find("\tATT\tx.bin\t\t\todd\r\n"), std::string::npos);
  EXPECT_EQ(Log().find("filtered"), std::string::npos);
}

TEST_F(LogTest, MultiLineLayout) {
  const std::string settings = "LogSingleLine=0\r\nLogMode=1\r\n";
  const auto log = [](IQuardaInstance& scan, IPlugin* plugin) {
    scan.LogOK(plugin, "passed");
    scan.LogError(nullptr, "bad");
    scan.LogWarn(plugin, "odd");
  };
  const std::string block = "2004-05-17 14:03:59 in_1.inp\r\n ERROR: bad\r\n [Probe] odd\r\n";
  ScanLogging(settings, Mail("in_1.inp"), log);
  EXPECT_EQ(Log(), block) << "a new file has no separator";
  Scan(Path("in_1.inp"));
  EXPECT_EQ(Log(), block + "\r\n***************\r\n" + block);
  Scan(Mail("a.txt"));
  EXPECT_TRUE(
      Log().ends_with(" odd\r\n2004-05-17 14:03:59 a.txt\r\n ERROR: bad\r\n [Probe] odd\r\n"))
      << "an attachment file is not separated from its mail: " << Log();
}

TEST_F(LogTest, MultiLineHeaderComesEvenWhenTheEntryIsFiltered) {
  const auto log = [](IQuardaInstance& scan, IPlugin*) { scan.LogDebug(nullptr, "no"); };
  ScanLogging("LogSingleLine=0\r\nLogMode=0\r\n", Mail("in_1.inp"), log);
  const std::string head = "2004-05-17 14:03:59 in_1.inp\r\n";
  EXPECT_EQ(Log(), head);
  platform::RemoveFile(BasePath("Quarda.log"));
  ScanLogging("LogSingleLine=0\r\nLogMode=4\r\n", Path("in_1.inp"), log);
  EXPECT_TRUE(Log().starts_with(head + " Arguments: \"" + Path("in_1.inp") + "\"\r\n")) << Log();
}

TEST_F(LogTest, MovesToTheBackupAboveTheLimit) {
  const auto warn = [](IQuardaInstance& scan, IPlugin*) { scan.LogWarn(nullptr, "new"); };
  Write(BasePath("Quarda.log"), std::string(131072, 'x'));
  ScanLogging("LogMaxFileSize=128\r\n", Mail("in_1.inp"), warn);
  EXPECT_TRUE(Read(BasePath("Quarda.bak")).ends_with("new\r\n"))
      << "a file of just the limit takes one more entry";
  EXPECT_EQ(Log(), "") << "an entry that is filtered out moves the file as well";
  Write(BasePath("Quarda.log"), std::string(131073, 'y'));
  Scan(Path("in_1.inp"));
  EXPECT_EQ(Read(BasePath("Quarda.bak")), std::string(131073, 'y'));
  EXPECT_TRUE(Log().ends_with("new\r\n"));
}

TEST_F(LogTest, GoesToTheFolderOfTheSettings) {
  const auto warn = [](IQuardaInstance& scan, IPlugin*) { scan.LogWarn(nullptr, "here"); };
  platform::CreateFolders(Path("logs"));
  ScanLogging("LogFilePath= " + Path("logs") + " \r\n", Mail("in_1.inp"), warn);
  EXPECT_NE(Read(Path("logs\\Quarda.log")).find("here"), std::string::npos);
  ScanLogging("LogFilePath=" + Path("missing") + "\r\n", Path("in_1.inp"), warn);
  EXPECT_FALSE(platform::FileExists(Path("missing\\Quarda.log"))) << "it costs only the entry";
}

TEST(PluginColumnTest, ShowsWhereTheLibraryIs) {
  const struct {
    std::string library;
    const char* column;
  } kRows[] = {
      {"C:\\base\\plug\\extra.dll", "P@plug\\extra.dll"},
      {"c:\\BASE\\extra.dll", "P@extra.dll"},
      {"C:\\other\\x.dll", "P@..\\other\\x.dll"},
      {"D:\\p\\x.dll", "P@D:\\p\\x.dll"},
      {"C:\\x.dll", "P@..\\x.dll"},
      {platform::NativePath("C:\\base\\plug\\extra.so"), "P@plug\\extra.so"},
      {"extra.so", "P@extra.so"},
  };
  for (const auto& row : kRows) {
    const auto plugin = MakeRef<TFakePlugin>("P");
    plugin->library = row.library;
    EXPECT_EQ(PluginColumn(*plugin, "C:\\base"), row.column) << row.library;
  }
}

}  // namespace
}  // namespace quarda::test
