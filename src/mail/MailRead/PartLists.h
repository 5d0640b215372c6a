// The lists of attachments and texts that a mail keeps of its parts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "MailPart.h"

namespace quarda {

/// Attachments and texts in document order, as they were when the document was last told of a
/// change. A plug-in may touch every part of a mail with a hundred thousand of them, so a change
/// costs what it changes, and only reordering lists all parts anew.
class TPartLists {
 public:
  const std::vector<TMailPart*>& Attachments() const noexcept { return attachments_; }
  const std::vector<TMailPart*>& Texts() const noexcept { return texts_; }

  /// A part was appended somewhere; it is listed by the next update.
  void NoteAdded(TMailPart& part);
  /// The header of a part changed; it is looked at by the next update.
  void NoteChanged(TMailPart& part);
  /// The order of parts changed; the next update lists all anew.
  void NoteReordered() noexcept { rebuild_ = true; }
  /// Must be called before a part and what lies below it are destroyed.
  void Forget(TMailPart& part);
  /// The same for what lies below the part alone.
  void ForgetChildren(TMailPart& part);
  /// Empties both lists; the next update lists all parts anew.
  void Clear() noexcept;
  void Update(TMailPart& root);
  void Rebuild(TMailPart& root);
  /// Lists the parts of a tree that was just read: the parser knows already what they are.
  void ListRead(TMailPart& root);

 private:
  void ForgetRange(uint64_t first, uint64_t last);
  void Number(TMailPart& part);
  void ListAll(TMailPart& root, bool classified);
  void Relist(TMailPart& part);
  std::vector<TMailPart*>* ListOf(TMailPart::TListing listing) noexcept;

  std::vector<TMailPart*> attachments_;
  std::vector<TMailPart*> texts_;
  std::vector<TMailPart*> added_;
  std::vector<TMailPart*> changed_;
  uint64_t lastOrder_ = 0;
  bool rebuild_ = true;
};

}  // namespace quarda
