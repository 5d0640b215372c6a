// Shapes that make careless readers quadratic or overflow their stack. Sizes are such that anything
// quadratic runs for many minutes, far beyond the time a test is given.
#include <MailRead.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "MailTestTools.h"

namespace quarda {
namespace {

std::string Times(size_t count, std::string_view text) {
  std::string all;
  all.reserve(count * text.size());
  for (size_t i = 0; i < count; ++i) all.append(text);
  return all;
}

// `depth` multiparts, one inside the other, with a text in the innermost.
std::string Nested(size_t depth) {
  std::string text;
  for (size_t i = 0; i < depth; ++i) {
    const std::string boundary = std::to_string(i);
    text += "Content-Type: multipart/x; boundary=b" + boundary + "\n\n--b" + boundary + "\n";
  }
  return text + "Content-Type: text/plain\n\nhere\n";
}

std::string ManyParts(size_t count) {
  return "Content-Type: multipart/x; boundary=B\n\n" +
         Times(count, "--B\nContent-Disposition: attachment\n\nx\n") + "--B--\n";
}

size_t Depth(TMailPart& root) {
  size_t depth = 0;
  for (TMailPart* part = &root; part->GetCount() > 0; part = &part->GetParts(0)) ++depth;
  return depth;
}

size_t BodyLines(TMail& root) {
  TMailPart* part = &root;
  while (part->GetCount() > 0) part = &part->GetParts(0);
  return part->GetBody().Count();
}

TEST(HostileMails, CostLinearTime) {
  const size_t kLines = 200000;
  const struct {
    const char* row;
    std::string text;
    size_t (*measure)(TMail&);
    size_t expected;
  } kRows[] = {
      {"fields", Times(100000, "A: b\n"), [](TMail& m) { return m.GetHeader().GetCount(); },
       100000},
      {"semicolons", "A: " + Times(500000, ";") + "b\n",
       [](TMail& m) { return m.GetHeader().GetItems(0).GetCount(); }, 1},
      {"parameters", "A: x" + Times(250000, ";a=b") + "\n",
       [](TMail& m) { return m.GetHeader().GetItems(0).GetCount(); }, 250001},
      {"words begun", "Subject: " + Times(1000001, "=?") + ";x\n",
       [](TMail& m) { return m.GetSubject().empty() ? 0 : m.GetHeader().GetItems(0).GetCount(); },
       1},
      {"spans begun", "A: " + Times(500000, "\"<") + ";x\n",
       [](TMail& m) { return m.GetHeader().GetItems(0).GetCount(); }, 1},
      {"a folded field", "To: a@b" + Times(40000, ",\n <c@d>") + "\n",
       [](TMail& m) {
         TStringList list;
         m.GetToList(list);
         return list.Count();
       },
       40001},
      {"parts", ManyParts(100000), [](TMail& m) { return m.GetAttachmentCount(); }, 100000},
      {"lines like boundaries below open ones", Nested(200) + Times(kLines, "--b0\n") + "--b198\n",
       BodyLines, kLines + 2},
      {"empty lines", "\n" + Times(1000000, "\n"), BodyLines, 1000000},
      {"dashes", "\n" + Times(1000000, "-"), BodyLines, 1},
  };
  for (const auto& row : kRows) {
    const auto mail = Loaded(row.text);
    EXPECT_EQ(row.measure(*mail), row.expected) << row.row;
    const auto again = Loaded(Saved(*mail));
    EXPECT_EQ(row.measure(*again), row.expected) << row.row;
  }
}

// What plug-ins do to every part of a mail.
TEST(HostileMails, CostLinearTimeToEdit) {
  const auto mail = Loaded(ManyParts(50000));
  for (size_t i = 0; i < mail->GetAttachmentCount(); ++i) {
    TMailPart& part = mail->GetAttachments(i);
    part.SetContentType("image/gif");
    part.SetContent(mail::e8bit, part.GetFileName());
  }
  EXPECT_EQ(mail->GetAttachments(49999).DecodedContent(), "Att49999.txt");
  mail->Add().SetContentType("text/plain");
  while (mail->GetAttachmentCount() > 0) {
    mail->DeleteAttachment(mail->GetAttachments(mail->GetAttachmentCount() - 1));
  }
  EXPECT_EQ(mail->GetTextCount(), 1u);
}

void* CallOnThread(void* body) {
  (*static_cast<std::function<void()>*>(body))();
  return nullptr;
}

// A thread with a small stack stands for nesting of any depth.
void WithSmallStack(std::function<void()> body) {
  pthread_attr_t attributes;
  pthread_t thread;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, 256 * 1024), 0);
  ASSERT_EQ(pthread_create(&thread, &attributes, CallOnThread, &body), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

TEST(HostileMails, NestAsDeepAsTheyLike) {
  const size_t kDepth = 100000;
  WithSmallStack([&] {
    const auto mail = Loaded(Nested(kDepth));
    EXPECT_EQ(Depth(*mail), kDepth);
    EXPECT_EQ(mail->GetTextCount(), 1u);
    EXPECT_EQ(mail->GetTexts(0).DecodedContent(), "here");
    mail->GetTexts(0).SetContent(mail::eCurrent, std::string_view("there"));
    EXPECT_TRUE(mail->GetModified());
    mail->LoadAllBodies();
    const auto again = Loaded(Saved(*mail));
    EXPECT_EQ(Depth(*again), kDepth);
    TMail copy;
    copy.Assign(*again);
    EXPECT_EQ(copy.GetTexts(0).DecodedContent(), "there");
    copy.Delete(0);
    EXPECT_EQ(copy.GetTextCount(), 0u);
    copy.LoadAllBodies();
    again->Clear();
  });
}

}  // namespace
}  // namespace quarda
