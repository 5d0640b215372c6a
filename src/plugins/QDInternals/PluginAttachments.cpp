#include "PluginAttachments.h"

#include <Utils.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "CheckListFile.h"
#include "Messages.h"
#include "PatternList.h"

namespace quarda {
namespace {

constexpr std::string_view kInvalidExtension =
    "Invalid attachment file extension: \"%s\" <=> \"%s\"";
constexpr std::string_view kInvalidDoubleExtension =
    "Invalid attachment double file extension: \"%s\" <=> \"%s\"";
constexpr std::string_view kInvalidName = "Invalid filename: \"%s\" => %s";
constexpr std::string_view kPassed = "passed";

// Why an attachment is refused; nothing when it may pass.
using TRefusal = std::optional<std::string>;

// The file names of a mail's attachments. Each is asked for once, and only when a rule comes to it:
// an attachment that cannot be read must not hide the ones before it.
class TAttachmentNames {
 public:
  explicit TAttachmentNames(IMail& mail) : mail_(mail), count_(mail.GetAttachmentCount()) {}

  // The first refusal in mail order.
  template <class TRule>
  TRefusal FirstRefusal(const TRule& rule) {
    for (int32_t i = 0; i < count_; ++i) {
      if (TRefusal refusal = rule.Refuse(Name(i))) return refusal;
    }
    return std::nullopt;
  }

 private:
  const std::string& Name(int32_t index) {
    if (static_cast<size_t>(index) == names_.size()) {
      names_.push_back(mail_.GetAttachments(index)->GetFileName().Str());
    }
    return names_[static_cast<size_t>(index)];
  }

  IMail& mail_;
  const int32_t count_;
  std::vector<std::string> names_;
};

std::string WithDot(std::string_view item) {
  return item.starts_with('.') ? std::string(item) : Concat({".", item});
}

class TInvalidExtensions {
 public:
  explicit TInvalidExtensions(IConfig& config) {
    for (const std::string& item : LinesOf(config.GetInvalidAttachmentExts().Get())) {
      masks_.Add(WithDot(item));
    }
  }

  TRefusal Refuse(const std::string& name) const {
    const std::string extension = ExtractFileExt(name);
    if (!masks_.FirstMatch(extension)) return std::nullopt;
    return FillIn(kInvalidExtension, {extension, name});
  }

 private:
  TPatternList masks_;
};

// A name with several extensions must end in an allowed one that is not invalid all the same.
class TDoubleExtensions {
 public:
  explicit TDoubleExtensions(IConfig& config) {
    AddItems(allowed_, config.GetAllowedDoubleAttachmentExts().Get());
    AddItems(invalid_, config.GetInvalidDoubleAttachmentExts().Get());
  }

  TRefusal Refuse(const std::string& name) const {
    if (name.empty() || CountChar('.', std::string_view(name).substr(1)) < 2) return std::nullopt;
    std::string candidate = name;
    if (candidate.front() == '.') candidate.front() = 'A';
    if (!allowed_.FirstMatch(candidate)) return Refusal(LastAllowed(), name);
    const std::optional<size_t> invalid = invalid_.FirstMatch(candidate);
    if (!invalid) return std::nullopt;
    return Refusal(invalid_.Pattern(*invalid), name);
  }

 private:
  static void AddItems(TPatternList& patterns, IStringList* items) {
    for (const std::string& item : LinesOf(items)) patterns.Add("*" + WithDot(item));
  }
  static std::string Refusal(std::string_view pattern, std::string_view name) {
    return FillIn(kInvalidDoubleExtension, {pattern, name});
  }
  // The one compared last when none allows the name.
  std::string_view LastAllowed() const {
    return allowed_.Count() == 0 ? std::string_view() : allowed_.Pattern(allowed_.Count() - 1);
  }

  TPatternList allowed_{TReadFrom::kEnd};
  TPatternList invalid_{TReadFrom::kEnd};
};

// Lines `pattern=description` of the settings and of the check-list file.
class TInvalidNames {
 public:
  explicit TInvalidNames(IQuardaInstance& instance) {
    AddLines(instance.GetConfig()->GetInvalidAttachments().Get());
    TClfFile checkList(instance);
    checkList.Load(CheckListPath(instance));
    AddLines(checkList.NormalList(checkList.GetInvalidAttachments()).Get());
  }

  TRefusal Refuse(const std::string& name) const {
    const std::optional<size_t> match = patterns_.FirstMatch(name);
    if (!match) return std::nullopt;
    return FillIn(kInvalidName, {patterns_.Pattern(*match), descriptions_[*match]});
  }

 private:
  void AddLines(IStringList* lines) {
    for (const std::string& line : LinesOf(lines)) {
      const size_t equals = line.find('=');
      patterns_.Add(line.substr(0, equals));
      descriptions_.push_back(equals == line.npos ? "" : DelQuotes(line.substr(equals + 1)));
    }
  }

  TPatternList patterns_;
  std::vector<std::string> descriptions_;
};

TRefusal FindRefusal(IQuardaInstance& instance) {
  const TRef<IConfig> config = instance.GetConfig();
  const TRef<IMail> mail = instance.GetMail();
  TAttachmentNames names(*mail);
  TRefusal refusal;
  if (config->GetBlockInvalidAttachmentExts()) {
    refusal = names.FirstRefusal(TInvalidExtensions(*config));
  }
  if (!refusal && config->GetBlockOnDoubleAttachmentExts()) {
    refusal = names.FirstRefusal(TDoubleExtensions(*config));
  }
  // Nothing in the engine removes an attachment by its name, so that mode blocks the mail as well.
  if (!refusal && config->GetBlockInvalidAttachments() != abmNone) {
    refusal = names.FirstRefusal(TInvalidNames(instance));
  }
  return refusal;
}

}  // namespace

bool TPluginAttachments::DoExecute(IQuardaInstance& instance) {
  if (instance.GetFileType() == ftAttachment) return true;
  if (const TRefusal refusal = FindRefusal(instance)) {
    instance.VirusReason(this, *refusal);
    return false;
  }
  instance.LogOK(this, kPassed);
  return true;
}

}  // namespace quarda
