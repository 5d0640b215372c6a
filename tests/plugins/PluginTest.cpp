// The base class of the internal plug-ins and their list.
#include <CurrentApp.h>
#include <Errors.h>
#include <InternalPlugins.h>
#include <Program.h>
#include <QDPlugin.h>
#include <gtest/gtest.h>

#include <string>

#include "TestInstance.h"

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

}  // namespace
}  // namespace quarda
