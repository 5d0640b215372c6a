// Which libraries the settings make the engine load.
#include <PluginLoadPlugins.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TestScan.h"

namespace quarda {
namespace {

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
