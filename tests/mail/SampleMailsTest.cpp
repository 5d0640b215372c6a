// Real mails: every way of reading one gives the same tree, and its written form is a fixed point
// that holds the same attachments and texts.
#include <MailRead.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "MailTestTools.h"

namespace quarda {
namespace {

// A body read from the file is split at a lone CR too, so those count as line ends here.
std::string WithLineFeeds(std::string_view text) {
  std::string lines;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\r') lines += text[i];
    if (text[i] == '\r' && text.substr(i + 1, 1) != "\n") lines += '\n';
  }
  return lines;
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

// What streams of every kind give is compared by fuzz/mail.cpp, which begins with these mails.
TEST(SampleMails, AreTheSameFromTheirFileAndWrittenAgain) {
  size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(QD_TEST_DATA "/mails")) {
    SCOPED_TRACE(entry.path().filename().string());
    const std::string file = platform::WindowsPath(entry.path().string());
    const auto mail = Loaded(platform::ReadWholeFile(file));
    const std::vector<std::string> contents = Contents(*mail);
    const std::string written = Saved(*mail);
    const auto again = Loaded(written);
    EXPECT_TRUE(Contents(*again) == contents);
    EXPECT_TRUE(Saved(*again) == written);
    for (const bool keepBodies : {false, true}) {
      TMail fromFile;
      fromFile.KeepBodies = keepBodies;
      fromFile.LoadFromFile(file);
      EXPECT_EQ(fromFile.IsBodyResident(), keepBodies);
      EXPECT_EQ(fromFile.GetAttachmentCount() + fromFile.GetTextCount(), contents.size());
      EXPECT_TRUE(WithLineFeeds(Saved(fromFile)) == WithLineFeeds(written)) << keepBodies;
    }
    ++count;
  }
  EXPECT_GE(count, 70u);
}

}  // namespace
}  // namespace quarda
