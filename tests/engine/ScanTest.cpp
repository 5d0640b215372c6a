#include <Errors.h>
#include <QDPlugin.h>
#include <StringList.h>

#include <stdexcept>

#include "EngineFixture.h"

namespace quarda::test {
namespace {

class ScanTest : public TEngineTest {
 protected:
  /// A plug-in that notes its calls in `calls_`.
  TFakePlugin& Noting(const std::string& name, bool result = true) {
    TFakePlugin& plugin = Plugin(name);
    plugin.execute = [this, name, result](IQuardaInstance&) {
      calls_ += name + " ";
      return result;
    };
    plugin.done = [this, name](IQuardaInstance&, bool passed) {
      calls_ += "done-" + name + (passed ? "+ " : "- ");
    };
    return plugin;
  }
  std::string calls_;
};

TEST_F(ScanTest, ClassifiesByName) {
  const struct {
    const char* name;
    TOvraMailFileType fileType;
  } kRows[] = {{"in_123.INP", ftInMail}, {"OUT_9.inp", ftOutMail},
               {"In_.iNp", ftInMail},    {"in_123.txt", ftAttachment},
               {"x.inp", ftAttachment},  {"in.inp", ftAttachment},
               {"in_1", ftAttachment},   {"in_1.inp.exe", ftAttachment}};
  for (const auto& row : kRows) {
    TOvraMailFileType seen = ftOutMail;
    Plugin("Probe").execute = [&seen](IQuardaInstance& scan) {
      seen = scan.GetFileType();
      return true;
    };
    Scan(Mail(row.name));
    EXPECT_EQ(seen, row.fileType) << row.name;
  }
}

TEST_F(ScanTest, CarriesTheDirectionToAttachmentFiles) {
  TOvraMailType type = mtUnknown;
  std::string subject;
  Plugin("Probe").execute = [&](IQuardaInstance& scan) {
    type = scan.GetMailType();
    subject = scan.GetMail()->GetSubject().Str();
    return true;
  };
  const std::string attachment = Mail("picture.gif", "GIF89a");
  Scan(attachment);
  EXPECT_EQ(type, mtUnknown);
  EXPECT_EQ(subject, "");
  const std::string mail = Mail("out_7.inp", "Subject: seven\r\n\r\n");
  Scan(mail);
  EXPECT_EQ(Read(BasePath("Temp\\Quarda.mai")), "outmail\r\n" + mail + "\r\n");
  Scan(attachment);
  EXPECT_EQ(type, mtOutMail);
  EXPECT_EQ(subject, "seven") << "the mail of an attachment file is the one scanned before it";
  Write(BasePath("Temp\\Quarda.mai"), "INMAIL");
  Scan(attachment);
  EXPECT_EQ(type, mtInMail);
  EXPECT_EQ(subject, "");
}

TEST_F(ScanTest, LeavesOutWhatIsNotToBeScanned) {
  Noting("P", false);
  Settings("[Common]\r\nMailCheckMode=Outgoing\r\n[Logging]\r\nLogMode=4\r\n");
  EXPECT_EQ(Scan(Mail("in_1.inp")), 0);
  EXPECT_TRUE(Read(BasePath("Temp\\Quarda.mai")).starts_with("inmail\r\n"));
  EXPECT_EQ(Run("engine.exe -x"), 0);
  EXPECT_TRUE(LogHas("No filename."));
  EXPECT_EQ(Scan(Path("missing.inp")), 0);
  EXPECT_EQ(calls_, "");
  EXPECT_FALSE(platform::FileExists(BasePath("Temp\\Statistic.txt")));
  EXPECT_FALSE(LogHas("Quarda finished."));
  EXPECT_EQ(Scan(Mail("out_1.inp")), 1);
}

TEST_F(ScanTest, StopsAtTheFirstRefusal) {
  Noting("A");
  Noting("B", false);
  Noting("C");
  EXPECT_EQ(Scan(Mail("in_1.inp")), 1);
  EXPECT_EQ(calls_, "A B done-A- done-B- done-C- ");
  EXPECT_TRUE(LogHas("returned ExitCode: 1"));
}

TEST_F(ScanTest, InactivePluginsAreLeftAlone) {
  TFakePlugin& idle = Noting("Idle", false);
  idle.init = [](IQuardaInstance&) { return false; };
  idle.confirm = [](const std::string&, bool, bool) { return false; };
  Noting("A");
  EXPECT_EQ(Scan(Mail("in_1.inp")), 0);
  EXPECT_EQ(calls_, "A done-A+ ");
}

TEST_F(ScanTest, PluginsAddedWhileInitialisingTakePartWithoutInit) {
  const auto late = MakeRef<TFakePlugin>("Late");
  late->init = [this](IQuardaInstance&) {
    calls_ += "init ";
    return true;
  };
  late->execute = [this](IQuardaInstance&) {
    calls_ += "late ";
    return true;
  };
  late->done = [this](IQuardaInstance&, bool) { calls_ += "done "; };
  Plugin("Loader").init = [late](IQuardaInstance& scan) {
    scan.GetPlugins()->Add(late.Get(), 0);
    return false;
  };
  Scan(Mail("in_1.inp"));
  EXPECT_EQ(calls_, "late done ");
}

TEST_F(ScanTest, AnotherPluginOverturnsAResult) {
  std::string asked;
  TFakePlugin& judge = Noting("Judge");
  judge.confirm = [&asked](const std::string& name, bool later, bool passed) {
    asked += name + (later ? ">" : "<") + (passed ? "+ " : "- ");
    return name != "B";
  };
  Noting("B", false);
  Noting("C");
  EXPECT_EQ(Scan(Mail("in_1.inp")), 0);
  EXPECT_EQ(calls_, "Judge B C done-Judge+ done-B+ done-C+ ");
  EXPECT_TRUE(asked.ends_with("B<- C<+ ")) << asked;

  judge.confirm = [](const std::string& name, bool, bool) { return name != "C"; };
  EXPECT_EQ(Scan(Path("in_1.inp")), 1) << "a pass is overturned as well";
  judge.confirm = [](const std::string&, bool, bool) -> bool { throw EError("no say"); };
  EXPECT_EQ(Scan(Path("in_1.inp")), 1) << "B refuses, and a failing judge changes nothing";
  EXPECT_FALSE(LogHas("no say"));
}

TEST_F(ScanTest, PluginsMayChangeTheList) {
  std::string asked;
  Plugin("A").execute = [](IQuardaInstance& scan) {
    if (scan.GetApp()->GetInstanceCount() > 1) return true;
    scan.GetPlugins()->Delete(0);
    scan.GetPlugins()->Add(nullptr, 0);  // stands for nobody
    EXPECT_FALSE(scan.GetPlugins()->FindPlugin("nobody"));
    EXPECT_EQ(scan.GetApp()->RunInstance("x \"" + scan.GetArguments()->GetFilename().Str() + "\""),
              0);
    return true;
  };
  Plugin("B");
  Noting("C").confirm = [&asked](const std::string& name, bool, bool) {
    asked += name + " ";
    return true;
  };
  EXPECT_EQ(Scan(Mail("in_1.inp")), 0);
  EXPECT_TRUE(asked.ends_with("A B A ")) << asked;
}

TEST_F(ScanTest, ErrorsNeverBlockAMail) {
  TFakePlugin& failing = Plugin("Failing");
  failing.execute = [](IQuardaInstance&) -> bool { throw EError("in the check"); };
  Noting("A");
  EXPECT_EQ(Scan(Mail("in_1.inp")), 0);
  EXPECT_TRUE(LogHas("\tError\tFailing@"));
  EXPECT_TRUE(LogHas("Exception class EError: in the check"));
  EXPECT_EQ(calls_, "A done-A+ ");

  failing.execute = nullptr;
  failing.done = [](IQuardaInstance&, bool) { throw std::runtime_error("at the end"); };
  EXPECT_EQ(Scan(Path("in_1.inp")), 0);
  EXPECT_TRUE(LogHas("\tError\t\tException class EStandardError: at the end"));

  failing.done = nullptr;
  failing.init = [](IQuardaInstance&) -> bool { throw 42; };
  calls_.clear();
  EXPECT_EQ(Scan(Path("in_1.inp")), 0);
  EXPECT_EQ(calls_, "");
  EXPECT_TRUE(LogHas("Exception class EUnknownError"));
  EXPECT_TRUE(Read(BasePath("Temp\\Statistic.txt")).find("Mails=3") != std::string::npos);
}

TEST_F(ScanTest, AnIgnoredResultStillCounts) {
  Plugin("P").execute = [](IQuardaInstance& scan) {
    scan.SetGlobalData("ignoreresult", "1");
    return false;
  };
  EXPECT_EQ(Scan(Mail("in_1.inp")), 0);
  EXPECT_EQ(Log().find("returned ExitCode"), std::string::npos);
  EXPECT_NE(Read(BasePath("Temp\\Statistic.txt")).find("InVirus=1"), std::string::npos);
}

TEST_F(ScanTest, WritesAChangedMailBackUnlessItIsAVirus) {
  TFakePlugin& editor = Plugin("Editor");
  const auto edit = [](bool verdict) {
    return [verdict](IQuardaInstance& scan) {
      scan.GetMail()->SetSubject("changed");
      return verdict;
    };
  };
  const std::string original = "Subject: x\nTo: a\n\nText\n";
  editor.execute = edit(false);
  const std::string mail = Mail("in_1.inp", original);
  EXPECT_EQ(Scan(mail), 1);
  EXPECT_EQ(Read(mail), original);

  editor.execute = edit(true);
  platform::SetFileStamp(mail, 0x30B18000);
  EXPECT_EQ(Scan(mail), 0);
  EXPECT_EQ(Read(mail), "Subject: changed\r\nTo: a\r\n\r\nText\r\n");
  const uint32_t saved = *platform::FileStamp(mail);
  EXPECT_GT(saved, 0x30B18000u);

  const std::string attachment = Mail("a.txt", "body");
  EXPECT_EQ(Scan(attachment), 0);
  EXPECT_EQ(Read(attachment), "body");
  EXPECT_EQ(*platform::FileStamp(mail), saved) << "only the scan of the mail itself writes it";
}

TEST_F(ScanTest, ARelativeNameIsThatOfTheSameFileEverywhere) {
  std::string subject;
  Plugin("Editor").execute = [&subject](IQuardaInstance& scan) {
    subject = scan.GetMail()->GetSubject().Str();
    scan.GetMail()->SetSubject("changed");
    return true;
  };
  const std::string mail = Mail("base\\in_1.inp");
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(platform::NativePath(Path("base")));
  EXPECT_EQ(Scan("in_1.inp"), 0);
  Settings("[Logging]\r\nLogMode=4\r\n");
  std::filesystem::create_directory(Native() / "base/mails");
  Mail("base\\mails\\tempm");
  EXPECT_EQ(Scan("mails\\tempm"), 0);
  EXPECT_TRUE(LogHas("Known Ovra Server bug."));
  std::filesystem::current_path(before);
  EXPECT_TRUE(Read(mail).starts_with("Subject: changed\r\n"));
  EXPECT_EQ(Scan(Mail("a.txt")), 0);
  EXPECT_EQ(subject, "changed");
}

TEST_F(ScanTest, AMailThatDoesNotLoadKeepsItsBytes) {
  const std::string broken = "Subject: x\r\n   \r\r\n \t: y\r\n\r\nText\r\n";
  const std::string mail = Mail("in_1.inp", "A: b\r\n" + broken);
  Plugin("Editor").execute = [](IQuardaInstance& scan) {
    try {
      scan.GetMail();
    } catch (const EError&) {
    }
    return true;
  };
  const std::string before = Read(mail);
  Scan(mail);
  EXPECT_EQ(Read(mail), before);
}

TEST_F(ScanTest, LoadsFurtherMails) {
  const std::string other = Mail("other.eml", "Subject: other\r\n\r\n");
  Plugin("P").execute = [&](IQuardaInstance& scan) {
    EXPECT_FALSE(scan.LoadMailFromMemory("x", 0));
    EXPECT_FALSE(scan.LoadMailFromMemory(nullptr, 5));
    EXPECT_FALSE(scan.LoadMailFromFile(Path("missing.eml")));
    EXPECT_FALSE(scan.LoadMailFromMemory("\x01: x\n", 5));
    const std::string text = "Subject: memory\r\n\r\n";
    EXPECT_EQ(scan.LoadMailFromMemory(text.data(), static_cast<int32_t>(text.size()))->GetSubject(),
              "memory");
    EXPECT_EQ(scan.LoadMailFromFile(other)->GetSubject(), "other");
    const TRef<IStringList> list = scan.NewStringList();
    list->Add("line");
    EXPECT_EQ(list->GetText(), "line\r\n");
    return true;
  };
  Scan(Mail("in_1.inp"));
  EXPECT_FALSE(platform::FileExists(BasePath("Quarda.log")) && LogHas("Error"));
}

TEST_F(ScanTest, NestedScansShareTheApplication) {
  Settings("[Red Alert]\r\nVirusMailCount=2\r\n");
  const std::string inner = Mail("a.exe", "MZ");
  int depth = 0;
  std::string files;
  Plugin("Nest").execute = [&](IQuardaInstance& scan) {
    files += scan.GetArguments()->GetName().Str() + " ";
    EXPECT_EQ(scan.GetApp()->GetInstanceCount(), depth + 1);
    if (depth++ > 0) return false;
    const int32_t code = scan.GetApp()->RunInstance("engine.exe \"" + inner + "\"");
    EXPECT_EQ(code, 1);
    EXPECT_EQ(scan.GetApp()->GetInstanceCount(), 1);
    return true;
  };
  EXPECT_EQ(Scan(Mail("in_1.inp")), 0);
  EXPECT_EQ(files, "in_1.inp a.exe ");
  const std::string statistics = Read(BasePath("Temp\\Statistic.txt"));
  EXPECT_NE(statistics.find("Mails=1\r\nVirus=0\r\n"), std::string::npos) << statistics;
  EXPECT_FALSE(platform::FileExists(BasePath("Temp\\Quarda.ra"))) << "one mail counts once";
}

static_assert(noexcept(RunCommandLine(AnsiString())), "the host cannot take an error");

TEST_F(ScanTest, NothingIsLeftOfARequest) {
  bool alive = false;
  Plugin("P").execute = [&alive](IQuardaInstance&) {
    alive = static_cast<bool>(GetQuardaApp());
    return true;
  };
  Scan(Mail("in_1.inp"));
  EXPECT_TRUE(alive);
  EXPECT_FALSE(GetQuardaApp());
  EXPECT_EQ(RunCommandLine("engine.exe", {Path("no\\such\\folder"), &clock_}), 0);
  EXPECT_FALSE(GetQuardaApp());
  EXPECT_NO_THROW(LogException(nullptr));
}

TEST_F(ScanTest, PluginListRules) {
  const auto app = MakeRef<TQuardaApp>(TEngineEnvironment{Path("base"), &clock_});
  SetQuardaApp(app);
  app->Start();
  const TRef<IPluginList> list = app->GetPlugins();
  const int32_t internal = list->GetCount();
  EXPECT_EQ(list->FindPlugin("SUBJECT")->GetName(), "Subject");
  EXPECT_FALSE(list->FindPlugin("nobody"));
  const auto first = MakeRef<TFakePlugin>("Twin");
  EXPECT_EQ(list->Add(first.Get(), 0), internal);
  EXPECT_EQ(list->Add(MakeRef<TFakePlugin>("twin").Get(), 0), internal + 1);
  EXPECT_EQ(list->FindPlugin("TWIN").Get(), first.Get());
  EXPECT_THROW(list->GetPlugins(internal + 2), EListError);
  EXPECT_THROW(list->Delete(-1), EListError);
  list->Delete(internal);
  EXPECT_NE(list->FindPlugin("TWIN").Get(), first.Get());
  EXPECT_FALSE(list->LoadPlugin(Mail("no-library.dll", "text")));
  EXPECT_FALSE(list->LoadPlugin(""));
  EXPECT_EQ(list->GetCount(), internal + 1);
  app->Close();
  SetQuardaApp(nullptr);
}

}  // namespace
}  // namespace quarda::test
