// The base of the internal plug-ins, and the one way an error reaches the log.
#pragma once

#include <QDIntf.h>

#include <cstdint>
#include <string_view>

namespace quarda {

/// A plug-in that the engine brings along. A derived class supplies `DoExecute` and overrides those
/// of `Init`, `Done`, `ConfirmResult` and `GetDialogOptions` it needs.
class TPlugin : public TRefCounted<IPlugin> {
 public:
  AnsiString QDCALL GetFileName() override;  ///< the engine library
  AnsiString QDCALL GetName() override { return name_; }
  int32_t QDCALL GetVersionMajor() override { return versionMajor_; }
  int32_t QDCALL GetVersionMinor() override { return versionMinor_; }
  bool QDCALL Init(IQuardaInstance*) override { return true; }
  /// Runs `DoExecute`. A check that fails is logged and counts as passed: a mail is never blocked
  /// by an error.
  bool QDCALL Execute(IQuardaInstance* instance) final;
  void QDCALL Done(IQuardaInstance*, bool) override {}
  bool QDCALL ConfirmResult(IQuardaInstance*, IPlugin*, bool, bool) override { return true; }
  AnsiString QDCALL GetDialogOptions(IQuardaInstance*) override { return {}; }

 protected:
  TPlugin(std::string_view name, int32_t versionMajor, int32_t versionMinor);
  ~TPlugin() override = default;

  /// The check itself; true: passed, false: virus or blocked.
  virtual bool DoExecute(IQuardaInstance& instance) = 0;

 private:
  const AnsiString name_;
  const int32_t versionMajor_;
  const int32_t versionMinor_;
};

/// Writes the error being handled into the log of the newest scan, in the name of the plug-in
/// (null: of the engine). Without a scan nothing is written. Call it inside a catch block; it never
/// throws.
void LogException(IPlugin* plugin) noexcept;

}  // namespace quarda
