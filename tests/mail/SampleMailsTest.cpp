// Real mails: every way of reading one gives the same tree, and its written form is a fixed point
// that holds the same attachments and texts.
#include <MailRead.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "MailTestTools.h"

namespace quarda {
namespace {

const std::filesystem::path kMails = std::filesystem::path(QD_TEST_DATA) / "mails";

std::string Fields(THeader& header) {
  std::string text;
  for (size_t i = 0; i < header.GetCount(); ++i) {
    THeaderItem& item = header.GetItems(i);
    text.append(item.GetName()).append(item.IsFolded() ? "+" : "=");
    text.append(item.GetValues().SeparateText("|")).append("\n");
  }
  return text;
}

// A body read from the file is split at a lone CR too, so lone CRs count as line ends here.
std::string Lines(TMailPart& part) {
  std::string text = std::to_string(part.GetBody().IsEmpty()) + part.GetBody().SeparateText("\n");
  std::ranges::replace(text, '\r', '\n');
  return text;
}

std::string Describe(TMail& mail) {
  std::string text;
  std::vector<TMailPart*> pending{&mail};
  while (!pending.empty()) {
    TMailPart& part = *pending.back();
    pending.pop_back();
    text += "PART " + std::to_string(part.GetCount()) + "\n" + Fields(part.GetHeader()) + "\n" +
            Lines(part) + "\n";
    for (size_t i = part.GetCount(); i > 0; --i) pending.push_back(&part.GetParts(i - 1));
  }
  return text + std::to_string(mail.GetAttachmentCount()) + " " +
         std::to_string(mail.GetTextCount());
}

std::string Content(TMailPart& part) {
  const std::string kind = part.GetContentType() + "|" + part.GetFileName() + "|" + part.GetName();
  try {
    return kind + "|" + part.DecodedContent();
  } catch (const EMailDecodeError&) {
    return kind + "|" + part.GetFileContent();
  }
}

std::vector<std::string> Contents(TMail& mail) {
  std::vector<std::string> contents;
  for (size_t i = 0; i < mail.GetAttachmentCount(); ++i) {
    contents.push_back("A " + Content(mail.GetAttachments(i)));
  }
  for (size_t i = 0; i < mail.GetTextCount(); ++i) {
    contents.push_back("T " + Content(mail.GetTexts(i)));
  }
  return contents;
}

template <class Use>
void ForEachMail(Use use) {
  size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(kMails)) {
    SCOPED_TRACE(entry.path().filename().string());
    use(platform::WindowsPath(entry.path().string()));
    ++count;
  }
  EXPECT_GE(count, 70u);
}

TEST(SampleMails, ReadTheSameFromEverySource) {
  ForEachMail([](const std::string& file) {
    TMail resident;
    resident.LoadFromFile(file);
    const std::string expected = Describe(resident);
    TMail deferred;
    deferred.KeepBodies = false;
    deferred.LoadFromFile(file);
    EXPECT_FALSE(deferred.IsBodyResident());
    EXPECT_TRUE(Describe(deferred) == expected);
    EXPECT_TRUE(deferred.IsBodyResident());
    ForEachKindOfStream(platform::ReadWholeFile(file), [&](TStream& stream) {
      TMail mail;
      mail.KeepBodies = false;  // a stream cannot be read again
      mail.LoadFromStream(stream);
      EXPECT_TRUE(mail.IsBodyResident());
      EXPECT_TRUE(Describe(mail) == expected);
    });
  });
}

TEST(SampleMails, WrittenFormIsAFixedPoint) {
  ForEachMail([](const std::string& file) {
    const auto mail = Loaded(platform::ReadWholeFile(file));
    const std::vector<std::string> contents = Contents(*mail);
    const std::string written = Saved(*mail);
    const auto again = Loaded(written);
    EXPECT_TRUE(Contents(*again) == contents);
    EXPECT_TRUE(Saved(*again) == written);
  });
}

}  // namespace
}  // namespace quarda
