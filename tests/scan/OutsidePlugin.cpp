// A plug-in library as others write it: built against the contract alone, with a C++ runtime of its
// own. The subject of the mail tells it what to do.
#include <QDIntf.h>
#include <dlfcn.h>

#include <cstdlib>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>

namespace quarda {
namespace {

std::string EnvironmentText(const char* name) {
  const char* const text = std::getenv(name);
  return text == nullptr ? "" : text;
}

/// Leaves word that the library is unloaded.
struct TFarewell {
  ~TFarewell() {
    Dl_info library{};
    ::dladdr(this, &library);
    std::ofstream(EnvironmentText("OUTSIDE_FAREWELLS"), std::ios::app) << library.dli_fname << '\n';
  }
} farewell;

/// Live until the library is unloaded, which is longer than any scan.
TRef<IQuardaInstance> kept;
TRef<IPluginList> keptList;
TRef<IPlugin> keptPlugin;

class TOutsidePlugin final : public TRefCounted<IPlugin> {
 public:
  AnsiString QDCALL GetFileName() override { return "D:\\elsewhere\\outside.so"; }
  AnsiString QDCALL GetName() override { return "Outside"; }
  int32_t QDCALL GetVersionMajor() override { return 1; }
  int32_t QDCALL GetVersionMinor() override { return 0; }
  bool QDCALL Init(IQuardaInstance*) override { return true; }
  bool QDCALL Execute(IQuardaInstance* instance) override {
    const std::string subject = instance->GetMail()->GetSubject().Str();
    if (subject == "raise") throw std::runtime_error("out of order");
    if (subject == "catch") CatchErrorOfEngine(*instance);
    if (subject == "refuse") instance->VirusReason(this, "unwanted");
    if (subject == "keep") kept = TRef(instance);
    if (subject == "keep list") keptList = instance->GetPlugins();
    if (subject == "delete") DeleteFrom(*instance->GetPlugins());
    if (subject == "exit") EndProcess(*instance);
    if (subject == "inner") instance->LogWarn(this, "inner");
    if (subject == "parts") Rewrite(*instance->GetMail());
    return subject != "refuse";
  }
  void QDCALL Done(IQuardaInstance* instance, bool) override {
    if (instance->GetMail()->GetSubject() == "raise late") throw std::runtime_error("too late");
  }
  bool QDCALL ConfirmResult(IQuardaInstance* instance, IPlugin* plugin, bool, bool) override {
    const bool isOther = plugin->GetName() == GetName();
    if (isOther && instance->GetMail()->GetSubject() == "keep other") keptPlugin = TRef(plugin);
    return true;
  }
  AnsiString QDCALL GetDialogOptions(IQuardaInstance*) override { return {}; }

 private:
  void DeleteFrom(IPluginList& plugins) {
    for (int32_t i = plugins.GetCount() - 1; i >= 0; --i) {
      if (plugins.GetPlugins(i).Get() == this) plugins.Delete(i);
    }
  }

  void EndProcess(IQuardaInstance& instance) {
    instance.GetConfig()->WriteString("Outside", "Written", "late");
    std::exit(3);
  }

  void CatchErrorOfEngine(IQuardaInstance& instance) {
    try {
      instance.NewStringList()->GetStrings(7);
    } catch (const std::exception& error) {
      instance.LogWarn(this, std::string("caught: ") + error.what());
    }
  }

  /// Strings, lists, fields and parts, made and dropped on both sides of the boundary.
  void Rewrite(IMail& mail) {
    const TRef<IStringList> lines = mail.GetBody()->CopyList();
    lines->Insert(0, std::string(1000, '=').append(mail.GetSubject()));
    lines->Add(lines->GetSeparateText("|"));
    mail.GetBody()->Assign(lines.Get());
    const TRef<IHeaderItem> field = mail.GetHeader()->Add("X-Outside", "one");
    field->AddValue("two=2");
    mail.SetMultipartSection(true);
    mail.SetContentType("multipart/mixed");
    mail.SetBoundary("limit");
    const TRef<IMailPart> part = mail.Add();
    part->SetContentType("text/plain");
    part->SetContent(eBase64, "inside", 6);
    const TRef<IMailPart> again = mail.GetParts(mail.GetCount() - 1);
    if (again->GetEncodeType() == eBase64) field->SetValue("same part");
  }
};

}  // namespace
}  // namespace quarda

extern "C" QDEXPORT void QDCALL cepEntryPoint(quarda::IPlugin** plugin) {
  const std::string fault = quarda::EnvironmentText("OUTSIDE_FAULT");
  if (fault == "null") return;
  if (fault == "raise") throw std::runtime_error("no plug-in");
  const auto made = quarda::MakeRef<quarda::TOutsidePlugin>();
  made->AddRef();
  *plugin = made.Get();
  if (fault == "raise late") throw std::runtime_error("a plug-in, and yet");
}
