#include "PluginTextHtml.h"

#include <CodePage.h>
#include <Files.h>
#include <Utils.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "HtmlNeutraliser.h"

namespace quarda {
namespace {

constexpr std::string_view kConverted = "Converted to text/plain";
constexpr std::string_view kFrameReason = "iframe-Tag found";
constexpr std::string_view kPassed = "passed";

constexpr std::string_view kBlockedScriptsFile = "BlockedScripts.dat";
constexpr std::array<std::string_view, 3> kHtmlExtensions = {".htm", ".html", ".shtml"};

bool IsHtml(IMailPart& part) {
  return platform::SameAnsiText(part.GetContentTypeSubType(), "html");
}

// Shows each text part to `visit` until that returns false. An error on one part is logged and the
// walk goes on.
template <class TVisit>
bool VisitTexts(IPlugin* plugin, IMail& mail, const TVisit& visit) {
  for (int32_t i = 0; i < mail.GetTextCount(); ++i) {
    try {
      if (!visit(*mail.GetTexts(i))) return false;
    } catch (...) {
      LogException(plugin);
    }
  }
  return true;
}

std::string DecodedContent(IMailPart& part) {
  std::string content(part.DecodedContent(nullptr), '\0');
  if (!content.empty()) content.resize(part.DecodedContent(content.data()));
  return content;
}

// None when there is no such file.
std::vector<std::string> LoadBlockedScripts(IQuardaInstance& instance) {
  std::vector<std::string> entries;
  const std::string path = JoinPath(instance.GetQuardaPath(), kBlockedScriptsFile);
  if (!platform::FileExists(path)) return entries;
  TStringList lines;
  lines.LoadFromFile(path);
  for (size_t i = 0; i < lines.Count(); ++i) {
    if (const std::string_view entry = Trim(lines[i]); !entry.empty()) entries.emplace_back(entry);
  }
  return entries;
}

THtmlLog LogOf(IQuardaInstance& instance, IPlugin* plugin) {
  return [&instance, plugin](int32_t priority, std::string_view message) {
    instance.Log(plugin, priority, message);
  };
}

}  // namespace

bool TPluginTextHtml::DoExecute(IQuardaInstance& instance) {
  if (instance.GetFileType() == ftAttachment) return true;
  const TRef<IConfig> config = instance.GetConfig();
  const TRef<IMail> mail = instance.GetMail();
  if (config->GetMakePlainText()) MakePlainText(instance, *mail);
  if (config->GetDisableActiveX() || config->GetDisableScripts()) {
    NeutraliseParts(instance, *mail, *config);
  }
  if (!CheckIFrames(instance)) return false;
  instance.LogOK(this, kPassed);
  return true;
}

// A page behind a plain text is an alternative to it: it is relabelled, so that no program shows it
// as a page, but it need not be readable.
void TPluginTextHtml::MakePlainText(IQuardaInstance& instance, IMail& mail) {
  bool plainPartSeen = false;
  VisitTexts(this, mail, [&](IMailText& part) {
    if (platform::SameAnsiText(part.GetContentTypeSubType(), "plain")) {
      plainPartSeen = true;
      return true;
    }
    if (!plainPartSeen && IsHtml(part)) part.SetText(RemoveHtmlTags(part.GetText()));
    part.SetContentTypeSubType("plain");
    instance.LogExtra(this, kConverted);
    return true;
  });
}

void TPluginTextHtml::NeutraliseParts(IQuardaInstance& instance, IMail& mail, IConfig& config) {
  VisitTexts(this, mail, [&](IMailText& part) {
    if (IsHtml(part)) NeutralisePart(instance, part, true);
    return true;
  });
  if (!config.GetCheckHtmlAttachments()) return;
  for (int32_t i = 0; i < mail.GetAttachmentCount(); ++i) {
    const TRef<IMailAttachment> part = mail.GetAttachments(i);
    const std::string extension = ExtractFileExt(part->GetFileName());
    if (CaseStringOf(extension, kHtmlExtensions) >= 0) NeutralisePart(instance, *part, false);
  }
}

void TPluginTextHtml::NeutralisePart(IQuardaInstance& instance, IMailPart& part,
                                     bool alwaysRemoveScripts) {
  const std::string html = DecodedContent(part);
  if (html.empty()) return;
  const TRef<IConfig> config = instance.GetConfig();
  const THtmlRules rules = {.disableActiveX = config->GetDisableActiveX(),
                            .disableScripts = config->GetDisableScripts(),
                            .alwaysRemoveScripts = alwaysRemoveScripts,
                            .blockedScripts = LoadBlockedScripts(instance)};
  if (const auto harmless = NeutraliseHtml(html, rules, LogOf(instance, this))) {
    part.SetContent(eCurrent, harmless->data(), static_cast<uint32_t>(harmless->size()));
  }
}

bool TPluginTextHtml::CheckIFrames(IQuardaInstance& instance) {
  if (instance.GetFileType() == ftAttachment) return true;
  const TIFrameBlockMode mode = instance.GetConfig()->GetBlockIFrames();
  if (mode == ibmNone) return true;
  return VisitTexts(this, *instance.GetMail(), [&](IMailText& part) {
    return !IsHtml(part) || CheckPage(instance, part, mode);
  });
}

bool TPluginTextHtml::CheckPage(IQuardaInstance& instance, IMailText& part, TIFrameBlockMode mode) {
  const TIFrameResult result = BlockIFrames(part.GetText(), mode, LogOf(instance, this));
  if (result.isVirus) {
    instance.SetGlobalData(kVirusReason, kFrameReason);
  } else if (result.html) {
    part.SetText(*result.html);
  }
  return !result.isVirus;
}

}  // namespace quarda
