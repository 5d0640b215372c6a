// An application that knows only where it is.
#pragma once

#include <QDIntf.h>

#include <string>
#include <utility>

namespace quarda {

class TTestAppBase : public TRefCounted<IQuardaApp> {
 public:
  explicit TTestAppBase(std::string baseFolder = {}) : baseFolder_(std::move(baseFolder)) {}
  TRef<IConfig> QDCALL GetConfig() override { return {}; }
  int32_t QDCALL GetInstanceCount() override { return 0; }
  TRef<IQuardaInstance> QDCALL GetInstances(int32_t) override { return {}; }
  AnsiString QDCALL GetQuardaPath() override { return baseFolder_; }
  TRef<IPluginList> QDCALL GetPlugins() override { return {}; }
  int32_t QDCALL RunInstance(const AnsiString&) override { return 0; }

 private:
  const std::string baseFolder_;
};

}  // namespace quarda
