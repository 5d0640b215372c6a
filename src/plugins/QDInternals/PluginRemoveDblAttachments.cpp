// Attachments fall into groups of copies. The groups are kept in a tree ordered by a hash of the
// body first and by the body itself where hashes are the same, so that each body is read once as a
// newcomer and compared in full only with what has its hash: also a sender who knows the hash does
// not make it worse than n log n comparisons. No more than two bodies are in memory at a time. The
// first attachment of a group stays. The others are
// deleted from the last one on, which keeps the places of those before them.
#include "PluginRemoveDblAttachments.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace quarda {
namespace {

constexpr int32_t kFewAttachments = 10;

// Whether the mail lists the part among its attachments.
bool IsListed(IMailPart& part) {
  return !part.GetMultipartSection() && (part.IsAttachment() || !part.IsText());
}

// How many attachments lie below the part: they go with it, and follow it in the list.
int32_t CountBelow(const TRef<IMailPart>& part) {
  int32_t listed = 0;
  std::vector<TRef<IMailPart>> pending{part};
  while (!pending.empty()) {
    const TRef<IMailPart> at = std::move(pending.back());
    pending.pop_back();
    for (int32_t i = at->GetCount() - 1; i >= 0; --i) {
      pending.push_back(at->GetParts(i));
      if (IsListed(*pending.back())) ++listed;
    }
  }
  return listed;
}

// The body as it stands in the mail, which is less work than its list of lines.
std::string ContentOf(IMailAttachment& attachment) {
  std::string content(attachment.GetFileContent(nullptr), '\0');
  attachment.GetFileContent(content.data());
  return content;
}

// Every line followed by CR LF: the same when and only when all lines are.
std::string LinesOf(IMailAttachment& attachment) {
  const TEncodeType encoding = attachment.GetEncodeType();
  if (encoding != eBase64 && encoding != eUUE) {  // whose lines the content joins
    const std::string content = ContentOf(attachment);
    if (!content.empty()) return content + "\r\n";
  }
  return attachment.GetBody()->GetText().Str();
}

// The attachments of a mail, put into groups of copies.
class TCopies {
 public:
  explicit TCopies(IMail& mail) : mail_(mail), groups_(TOrder{*this}) {
    const int32_t count = mail_.GetAttachmentCount();
    for (int32_t i = 0; i < count; ++i) groupOf_.push_back(FindGroup(i));
    members_.resize(groupOf_.size());
    for (int32_t i = 0; i < count; ++i) members_[GroupOf(i)].push_back(i);
  }

  // The places of all copies, in the order in which comparing each attachment with every later one
  // finds them.
  std::vector<int32_t> Find() const {
    std::vector<int32_t> found;
    std::vector<bool> gone(groupOf_.size());
    for (size_t i = 0; i < groupOf_.size(); ++i) {
      if (gone[i]) continue;
      for (const int32_t copy : members_[groupOf_[i]]) {
        const auto at = static_cast<size_t>(copy);
        if (at <= i || gone[at]) continue;
        found.push_back(copy);
        const int32_t below = CountBelow(TRef<IMailPart>(mail_.GetAttachments(copy)));
        std::fill_n(gone.begin() + copy, below + 1, true);
      }
    }
    return found;
  }

 private:
  struct TKey {
    size_t hash;
    AnsiString contentType;
    AnsiString encoding;
    int32_t index;
  };
  // Bodies are compared only when all else is the same.
  struct TOrder {
    TCopies& copies;
    bool operator()(const TKey& a, const TKey& b) const {
      const auto outside = [](const TKey& key) {
        return std::tuple(key.hash, key.contentType.View(), key.encoding.View());
      };
      if (outside(a) != outside(b)) return outside(a) < outside(b);
      return a.index != b.index && copies.IsBodyBefore(a.index, b.index);
    }
  };

  // Of the newcomer, which may be compared with several: read once.
  std::string_view NewLines() {
    if (!newLines_) newLines_ = LinesOf(*mail_.GetAttachments(newcomer_));
    return *newLines_;
  }
  // Whether the body of one comes before that of the other; the newcomer is one of them.
  bool IsBodyBefore(int32_t a, int32_t b) {
    const std::string other = LinesOf(*mail_.GetAttachments(a == newcomer_ ? b : a));
    return a == newcomer_ ? NewLines() < other : other < NewLines();
  }

  // The place of the first attachment of its group.
  size_t FindGroup(int32_t index) {
    const TRef<IMailAttachment> attachment = mail_.GetAttachments(index);
    newcomer_ = index;
    newLines_.reset();
    const TKey key{std::hash<std::string>()(ContentOf(*attachment)), attachment->GetContentType(),
                   attachment->GetContentTransferEncoding(), index};
    return static_cast<size_t>(groups_.insert(key).first->index);
  }

  size_t GroupOf(int32_t index) const { return groupOf_[static_cast<size_t>(index)]; }

  IMail& mail_;
  int32_t newcomer_ = -1;
  std::optional<std::string> newLines_;
  std::set<TKey, TOrder> groups_;
  std::vector<size_t> groupOf_;
  std::vector<std::vector<int32_t>> members_;  // by group
};

}  // namespace

bool TPluginRemoveDblAttachments::Init(IQuardaInstance* instance) {
  if (!instance->GetConfig()->GetIntelliVirusScan() || instance->GetFileType() != ftInMail) {
    return false;
  }
  const TRef<IMail> mail = instance->GetMail();
  if (mail->GetAttachmentCount() >= kFewAttachments) RemoveCopies(*instance, *mail);
  return false;
}

void TPluginRemoveDblAttachments::RemoveCopies(IQuardaInstance& instance, IMail& mail) {
  std::vector<int32_t> copies = TCopies(mail).Find();
  for (size_t i = 0; i < copies.size(); ++i) instance.LogWarn(this, "Double attachment removed");
  std::ranges::sort(copies, std::greater<>());
  for (const int32_t copy : copies) mail.DeleteAttachment(copy);
  instance.LogOK(this, "passed");
}

}  // namespace quarda
