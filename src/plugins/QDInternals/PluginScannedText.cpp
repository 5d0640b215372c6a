#include "PluginScannedText.h"

#include <CodePage.h>
#include <Files.h>
#include <Utils.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "PluginVirusScan.h"

namespace quarda {
namespace {

constexpr std::string_view kNoScanner = "No VirusScan executed";
constexpr std::string_view kPassed = "passed";

constexpr std::string_view kHeaderField = "X-Virusscan";
constexpr std::string_view kPlaceholder = "$ScannedText$";
constexpr std::string_view kHtmlFrame =
    "<br /><hr /><div style=\"font-size: 8pt; font-family: arial,verdana, helvetica;\">"
    "$ScannedText$</div>\r\n\r\n";
constexpr std::string_view kEmptyQuoted = "\"\"";

// From this length on a notice is taken for one of ours when a text holds it already.
constexpr size_t kTellingLength = 10;

// The macros of a notice. Whether any of its texts named the date or the time is kept, because the
// notice says it by itself otherwise.
class TNoticeMacros {
 public:
  explicit TNoticeMacros(const platform::TLocalTime& now) : now_(now) {}

  std::string Expand(std::string_view text) {
    TStringList file;  // the one that numbers refer to
    return ReplaceMacrosEx(text, [&](std::string& macro) {
      std::optional<std::string> replacement = Replacement(macro, file);
      if (replacement) macro = std::move(*replacement);
      return replacement.has_value();
    });
  }

  bool NamedNow() const noexcept { return namedNow_; }

 private:
  std::optional<std::string> Replacement(std::string_view macro, TStringList& file) {
    if (platform::SameAnsiText(macro, "$DATE$")) return Now(DateText(now_));
    if (platform::SameAnsiText(macro, "$TIME$")) return Now(ShortTimeText(now_));
    if (const auto name = FileName(macro, "$FILE(*)$")) return LoadInto(file, *name);
    if (const auto name = FileName(macro, "$FILEDATE(*)$")) return StampText(*name, DateText);
    if (const auto name = FileName(macro, "$FILETIME(*)$")) return StampText(*name, ShortTimeText);
    if (const auto name = FileName(macro, "$FILEDATETIME(*)$")) {
      return StampText(*name, [](const platform::TLocalTime& time) {
        return Concat({DateText(time), " ", ShortTimeText(time)});
      });
    }
    return LineOf(file, macro.substr(1, macro.size() - 2));
  }

  std::string Now(std::string text) {
    namedNow_ = true;
    return text;
  }

  // What the star of the mask stands for.
  static std::optional<std::string_view> FileName(std::string_view macro, std::string_view mask) {
    if (!MatchText(macro, mask)) return std::nullopt;
    return macro.substr(mask.find('*'), macro.size() - (mask.size() - 1));
  }

  static std::string LoadInto(TStringList& file, std::string_view name) {
    file.Clear();
    if (platform::FileExists(name)) file.LoadFromFile(name);
    return {};
  }

  template <class TFormat>
  static std::string StampText(std::string_view name, const TFormat& format) {
    const auto stamp = platform::FileExists(name) ? platform::FileStamp(name) : std::nullopt;
    return stamp ? format(platform::FromDosStamp(*stamp)) : std::string();
  }

  static std::optional<std::string> LineOf(const TStringList& file, std::string_view number) {
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    if (number.empty() || !std::ranges::all_of(number, isDigit)) return std::nullopt;
    const auto line = static_cast<size_t>(TryStrToInt(number).value_or(0));
    if (line == 0 || line > file.Count()) return std::string();
    return std::string(file[line - 1]);
  }

  const platform::TLocalTime now_;
  bool namedNow_ = false;
};

std::string PlainFrame(size_t textSize) {
  return Concat({"\r\n", std::string(textSize, '-'), "\r\n", kPlaceholder, "\r\n\r\n"});
}

std::string ExpandFrame(TNoticeMacros& macros, const AnsiString& configured,
                        std::string_view builtIn) {
  const bool hasOwn = !configured.IsEmpty() && configured != kEmptyQuoted;
  return Concat({"\r\n", macros.Expand(hasOwn ? CTextToText(configured) : std::string(builtIn))});
}

void PutLineInto(std::string& frame, std::string_view line) {
  const size_t at = platform::LowerAnsi(frame).find(platform::LowerAnsi(kPlaceholder));
  if (at != std::string::npos) frame.replace(at, kPlaceholder.size(), line);
}

// The notice in both forms, ready to be appended to texts.
class TNotice {
 public:
  TNotice(std::string_view text, TNoticeMacros& macros, const platform::TLocalTime& now,
          IConfig& config)
      : text_(text),
        html_(ExpandFrame(macros, config.GetScannedTextHtmlTextFormat(), kHtmlFrame)),
        plain_(
            ExpandFrame(macros, config.GetScannedTextPlainTextFormat(), PlainFrame(text.size()))) {
    std::string line(text);
    if (!macros.NamedNow()) line = Concat({DateText(now), " ", ShortTimeText(now), ": ", text});
    PutLineInto(html_, line);
    PutLineInto(plain_, line);
  }

  void AppendTo(IMailText& part) const {
    const AnsiString subType = part.GetContentTypeSubType();
    const bool isHtml = platform::SameAnsiText(subType, "html");
    const bool isTelling = text_.size() >= kTellingLength;
    if (!isHtml && isTelling && !platform::SameAnsiText(subType, "plain")) return;
    const AnsiString content = part.GetText();
    if ((isTelling || !isHtml) && IsIn(content)) return;
    part.SetText(Concat({content, isHtml ? html_ : plain_}));
  }

 private:
  bool IsIn(std::string_view content) const noexcept {
    return !text_.empty() && content.find(text_) != std::string_view::npos;
  }

  const std::string_view text_;
  std::string html_;
  std::string plain_;
};

}  // namespace

bool TPluginScannedText::IsWanted(IQuardaInstance& instance, IConfig& config) {
  if (instance.GetFileType() != ftOutMail || !config.GetShowScannedText()) return false;
  if (instance.GetApp()->GetInstanceCount() > 1) return false;
  // Without a text, a plain frame alone can be the notice.
  const bool hasPlainFrameOnly = !config.GetScannedTextPlainTextFormat().IsEmpty() &&
                                 config.GetScannedTextHtmlTextFormat().IsEmpty();
  if (config.GetScannedText().IsEmpty() && !hasPlainFrameOnly) return false;
  if (config.GetScannedTextOnlyWithVirusScan() && !VirusScannerConfigured(config)) {
    instance.LogDebug(this, kNoScanner);
    return false;
  }
  return true;
}

void TPluginScannedText::Done(IQuardaInstance* instance, bool passed) {
  const TRef<IConfig> config = instance->GetConfig();
  if (!passed || !IsWanted(*instance, *config)) return;
  const TRef<IMail> mail = instance->GetMail();
  const platform::TLocalTime now = clock_.Now();
  TNoticeMacros macros(now);
  const std::string text = macros.Expand(config->GetScannedText());
  const TScannedTextXHeader mode = config->GetScannedTextAsXHeader();
  if (mode != stxhAppend) mail->GetHeader()->Add(kHeaderField, text);
  if (mode != stxhXHeader) {
    const TNotice notice(text, macros, now, *config);
    for (int32_t i = 0; i < mail->GetTextCount(); ++i) {
      try {
        notice.AppendTo(*mail->GetTexts(i));
      } catch (...) {
        LogException(this);
      }
    }
  }
  instance->LogOK(this, kPassed);
}

}  // namespace quarda
