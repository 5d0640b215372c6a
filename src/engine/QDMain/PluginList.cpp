#include "PluginList.h"

#include <CodePage.h>
#include <Utils.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <utility>

namespace quarda {
namespace {

/// Asks the library for its plug-in; null when it has none to give.
TRef<IPlugin> AskForPlugin(platform::TLibraryHandle library) {
  const auto entryPoint =
      reinterpret_cast<TPluginEntryPoint>(platform::FindExport(library, kPluginEntryPoint));
  if (!entryPoint) return {};
  IPlugin* stored = nullptr;
  bool failed = false;
  try {
    entryPoint(&stored);
  } catch (...) {  // whatever the library raises, the scan goes on without it
    failed = true;
  }
  TRef<IPlugin> plugin(stored);
  if (stored) stored->Release();  // the entry point took a reference for us
  if (failed) plugin.Reset();     // before its code is unloaded
  return plugin;
}

bool IsHeldByOthers(const TRef<IPlugin>& plugin) {
  if (!plugin) return false;
  plugin->AddRef();
  return plugin->Release() > 1;
}

}  // namespace

TPluginList::~TPluginList() { Clear(); }

void TPluginList::Unload(std::vector<TEntry> entries) {
  std::map<IPlugin*, int32_t> references;  // what others hold when the list has dropped its own
  std::vector<std::pair<IPlugin*, platform::TLibraryHandle>> libraries;
  for (TEntry& entry : entries) {
    IPlugin* const plugin = entry.plugin.Get();
    libraries.emplace_back(plugin, entry.module);
    if (plugin == nullptr) continue;
    plugin->AddRef();
    entry.plugin.Reset();
    references[plugin] = plugin->Release();
  }
  for (const auto& [plugin, library] : libraries) {
    if (library != 0 && references[plugin] == 0) platform::UnloadLibrary(library);
  }
}

TPluginList::TEntry& TPluginList::Entry(int32_t index) {
  if (index < 0 || index >= GetCount()) RaiseListIndex(index);
  return entries_[static_cast<size_t>(index)];
}

TRef<IPlugin> TPluginList::GetPlugins(int32_t index) { return Entry(index).plugin; }

int32_t TPluginList::Add(IPlugin* plugin, uintptr_t module) {
  entries_.push_back({TRef<IPlugin>(plugin), module});
  return GetCount() - 1;
}

void TPluginList::Delete(int32_t index) {
  std::vector<TEntry> entry;
  entry.push_back(std::move(Entry(index)));
  entries_.erase(entries_.begin() + index);
  if (entry[0].module != 0 && IsHeldByOthers(entry[0].plugin)) {
    deleted_.push_back(std::move(entry[0]));  // it may be running; its code goes with the list
  } else {
    Unload(std::move(entry));
  }
}

void TPluginList::Clear() {
  std::vector<TEntry> entries = std::move(entries_);
  std::ranges::move(deleted_, std::back_inserter(entries));
  entries_.clear();
  deleted_.clear();
  Unload(std::move(entries));
}

TRef<IPlugin> TPluginList::LoadPlugin(const AnsiString& fileName) {
  const platform::TLibraryHandle library = platform::LoadLibraryFile(fileName);
  if (library == 0) return {};
  TRef<IPlugin> plugin = AskForPlugin(library);
  if (plugin) {
    Add(plugin.Get(), library);
  } else {
    platform::UnloadLibrary(library);
  }
  return plugin;
}

TRef<IPlugin> TPluginList::FindPlugin(const AnsiString& name) {
  for (const TEntry& entry : entries_) {
    if (entry.plugin && platform::SameAnsiText(entry.plugin->GetName(), name)) return entry.plugin;
  }
  return {};
}

}  // namespace quarda
