#include "InternalPlugins.h"

#include "PluginASmtpCheck.h"
#include "PluginAppExec.h"
#include "PluginAttachments.h"
#include "PluginExtractEml.h"
#include "PluginInformOnVirus.h"
#include "PluginLoadPlugins.h"
#include "PluginRemoveDblAttachments.h"
#include "PluginScannedText.h"
#include "PluginSpamFilter.h"
#include "PluginSubject.h"
#include "PluginTextHtml.h"
#include "PluginVirusScan.h"

namespace quarda {
namespace {

template <class TPluginClass>
TRef<IPlugin> Make() {
  return MakeRef<TPluginClass>();
}

constexpr TRef<IPlugin> (*kInternalPlugins[])() = {
    Make<TPluginRemoveDblAttachments>, Make<TPluginTextHtml>,    Make<TPluginSubject>,
    Make<TPluginASmtpCheck>,           Make<TPluginAttachments>, Make<TPluginLoadPlugins>,
    Make<TPluginExtractEml>,           Make<TPluginAppExec>,     Make<TPluginVirusScan>,
    Make<TPluginSpamFilter>,           Make<TPluginScannedText>, Make<TPluginInformOnVirus>,
};

}  // namespace

void InstallInternalPlugins(IQuardaApp* app) {
  const TRef<IPluginList> plugins = app->GetPlugins();
  for (const auto make : kInternalPlugins) plugins->Add(make().Get(), 0);
}

}  // namespace quarda
