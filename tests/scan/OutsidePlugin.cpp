// A plug-in library as others write it: built against the contract alone, with a C++ runtime of its
// own. The subject of the mail tells it what to do.
#include <QDIntf.h>

#include <exception>
#include <stdexcept>
#include <string>

namespace quarda {
namespace {

/// Lives until the library is unloaded, which is longer than any scan.
TRef<IQuardaInstance> kept;

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
    if (subject == "parts") Rewrite(*instance->GetMail());
    return subject != "refuse";
  }
  void QDCALL Done(IQuardaInstance* instance, bool) override {
    if (instance->GetMail()->GetSubject() == "raise late") throw std::runtime_error("too late");
  }
  bool QDCALL ConfirmResult(IQuardaInstance*, IPlugin*, bool, bool) override { return true; }
  AnsiString QDCALL GetDialogOptions(IQuardaInstance*) override { return {}; }

 private:
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
  const auto made = quarda::MakeRef<quarda::TOutsidePlugin>();
  made->AddRef();
  *plugin = made.Get();
}
