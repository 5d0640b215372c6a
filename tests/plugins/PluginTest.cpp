// The base class of the internal plug-ins and their list.
#include <CurrentApp.h>
#include <Encodings.h>
#include <Errors.h>
#include <InternalPlugins.h>
#include <PluginExtractEml.h>
#include <PluginLoadPlugins.h>
#include <Program.h>
#include <QDPlugin.h>
#include <TnefBuilder.h>
#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

#include "TestMail.h"
#include "TestScan.h"

namespace quarda {
namespace {

class TFailingPlugin final : public TPlugin {
 public:
  TFailingPlugin() : TPlugin("Failing", 3, 7) {}

 protected:
  bool DoExecute(IQuardaInstance&) override { throw EListError("no such line"); }
};

TEST(Plugin, DoesNothingUnlessToldTo) {
  const auto scan = MakeRef<TTestInstance>();
  const TRef<IPlugin> plugin = MakeRef<TFailingPlugin>();
  EXPECT_EQ(plugin->GetName(), "Failing");
  EXPECT_EQ(plugin->GetVersionMajor(), 3);
  EXPECT_EQ(plugin->GetVersionMinor(), 7);
  EXPECT_EQ(plugin->GetFileName().Str(), platform::ModulePath());
  EXPECT_TRUE(plugin->Init(scan.Get()));
  EXPECT_TRUE(plugin->ConfirmResult(scan.Get(), plugin.Get(), true, false));
  EXPECT_EQ(plugin->GetDialogOptions(scan.Get()), "");
}

TEST(Plugin, FailureIsLoggedByTheNewestScanAndPasses) {
  const TCurrentAppGuard current;
  const auto outer = MakeRef<TTestInstance>();
  const auto inner = MakeRef<TTestInstance>();
  const TRef<IPlugin> plugin = MakeRef<TFailingPlugin>();
  EXPECT_TRUE(plugin->Execute(inner.Get())) << "no application";
  SetQuardaApp(outer->app);
  outer->app->instances.push_back(inner.Get());
  EXPECT_TRUE(plugin->Execute(outer.Get()));
  EXPECT_EQ(outer->LogText(), "");
  EXPECT_EQ(inner->LogText(), "Error|Failing|Exception class EListError: no such line\n");
  outer->app->instances.clear();
  EXPECT_TRUE(plugin->Execute(outer.Get())) << "no scan";
  EXPECT_EQ(inner->log.size(), 1u);
}

TEST(Plugin, ErrorsOfTheEngineItselfNameNoPluginAndNeverEscape) {
  const TCurrentAppGuard current;
  const auto scan = MakeRef<TTestInstance>();
  SetQuardaApp(scan->app);
  for (const bool logFails : {false, true}) {
    scan->logFails = logFails;
    try {
      throw 7;
    } catch (...) {
      LogException(nullptr);
    }
  }
  EXPECT_EQ(scan->LogText(), "Error||Exception class EUnknownError: Unknown error\n");
}

TEST(InternalPlugins, StandInTheirOrder) {
  const auto scan = MakeRef<TTestInstance>();
  InstallInternalPlugins(scan->app.Get());
  std::string names;
  for (const TRef<IPlugin>& plugin : scan->app->plugins->plugins) {
    names += plugin->GetName().Str() + " ";
    EXPECT_EQ(plugin->GetVersionMajor() * 10 + plugin->GetVersionMinor(), 10) << names;
  }
  EXPECT_EQ(names,
            "RemoveDblAttachments text/html Subject ASmtpCheck Attachments LoadPlugins ExtractEml "
            "AppExec VirusScan SpamFilter ScannedText InformOnVirus ");
}

TEST(ExtractEml, AnErrorInsideHidesNoVirus) {
  using TRun = int32_t (*)(TTestInstance&);
  const TRun broken = [](TTestInstance&) -> int32_t { throw EError("broken"); };
  const TRun mute = [](TTestInstance& scan) -> int32_t {
    scan.logFails = true;
    throw EError("broken");
  };
  const TRun full = [](TTestInstance&) -> int32_t { throw std::bad_alloc(); };
  const TRun virus = [](TTestInstance&) { return 1; };
  const std::string mail = "Content-Disposition: attachment; filename=m.eml\n\nSubject: x\n\ny\n";
  const std::string container =
      "Content-Type: application/ms-tnef; name=w.dat\nContent-Transfer-Encoding: base64\n\n" +
      TextEncode(TnefContainer({{"a", "x"}}), meBase64) + "\n";
  const struct {
    const char* row;
    std::string attachment;
    TRun run;
    bool passed;
    const char* log;
  } kRows[] = {
      {"mail", mail, broken, true, "Error|ExtractEml|ERROR: Exception EError: broken\n"},
      {"container", container, broken, true, "Error|ExtractEml|ERROR: Exception EError: broken\n"},
      {"mail, log", mail, mute, true, "--- begin eml attachment"},
      {"container, log", container, mute, true, "--- begin ms-tnef attachment"},
      {"mail, memory", mail, full, false, "memory to open the attachment: \"In_00001.inp\"\n"},
      {"container, memory", container, full, false,
       "memory to open the attachment: \"Temp0001\"\n"},
      {"another encoding", "Content-Transfer-Encoding: x-odd\n" + mail, virus, true,
       "Error|ExtractEml|Exception class EMailDecodeError: "},
      {"a virus behind one that cannot be read",
       "Content-Transfer-Encoding: x-odd\n" + mail + "--b\n" + mail, virus, false, "begin eml"},
  };
  for (const auto& row : kRows) {
    const TCurrentAppGuard current;
    const auto scan = MakeScan("");
    SetQuardaApp(scan->app);
    scan->app->nestedScan = [&] { return row.run(*scan); };
    scan->mail = MailFromText("Content-Type: multipart/mixed; boundary=b\n\n--b\n" +
                              row.attachment + "--b--\n");
    EXPECT_EQ(MakeRef<TPluginExtractEml>()->Execute(scan.Get()), row.passed) << row.row;
    EXPECT_NE(scan->LogText().find(row.log), std::string::npos) << row.row << scan->LogText();
  }
}

TEST(LoadPlugins, FindsLibrariesBelowTheBaseFolder) {
  const auto scan = MakeScan("[Plugins]\nplug\\a.dll\n\\b.dll\nD:\\x\\c.dll\n");
  const TRef<IPlugin> plugin = MakeRef<TPluginLoadPlugins>();
  EXPECT_FALSE(plugin->Init(scan.Get()));
  EXPECT_EQ(scan->app->plugins->loaded,
            (std::vector<std::string>{scan->BaseFolder() + "\\plug\\a.dll",
                                      scan->BaseFolder() + "\\b.dll", "D:\\x\\c.dll"}));
  EXPECT_TRUE(plugin->Execute(scan.Get()));
}

}  // namespace
}  // namespace quarda
