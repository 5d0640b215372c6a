// Mails in files: bodies left there until they are needed, and files that must survive.
#include <Errors.h>
#include <MailRead.h>
#include <PlatformError.h>
#include <Streams.h>
#include <gtest/gtest.h>

#include <string>

#include "MailTestTools.h"

namespace quarda {
namespace {

class MailFileTest : public testing::Test {
 protected:
  void Write(std::string_view text) { platform::ReplaceFileContent(file_, text); }
  std::string Read() const { return platform::ReadWholeFile(file_); }

  const TTempFolder folder_;
  const std::string file_ = folder_.Path("mail.eml");
};

std::string Mail(std::string_view first, std::string_view second) {
  return "Content-Type: multipart/mixed; boundary=B\r\n\r\n--B\r\nA: b\r\n\r\n" +
         std::string(first) + "\r\n--B\r\n\r\n" + std::string(second) + "\r\n--B--\r\n\r\n";
}

TEST_F(MailFileTest, DeferredBodiesAreReadWhenNeeded) {
  // One body fits into a block, one is read by lines, and the file is parsed in blocks.
  std::string large;
  while (large.size() < 16000000)
    large += "seventy characters or so of a line that is repeated -- often\r\n";
  large += "lone\rCR";
  const std::string text = Mail("lone\rCR", large);
  Write(text);
  TMail mail;
  mail.KeepBodies = false;
  mail.LoadFromFile(file_);
  ASSERT_EQ(mail.GetCount(), 2u);
  EXPECT_FALSE(mail.GetParts(1).IsBodyResident());
  EXPECT_EQ(mail.GetParts(0).GetBody().Count(), 2u) << "a block is split at a lone CR";
  mail.SetSubject("s");
  mail.SaveToFile(file_);
  EXPECT_TRUE(mail.GetParts(1).IsBodyResident());
  const TStringList& lines = mail.GetParts(1).GetBody();
  EXPECT_EQ(lines.Line(lines.Count() - 1), "lone\rCR");
  std::string expected = Mail("lone\r\nCR", large);
  expected.insert(expected.find("\r\n") + 2, "Subject: s\r\n");
  EXPECT_TRUE(Read() == expected);

  TMail kept;
  kept.LoadFromFile(file_);
  EXPECT_TRUE(kept.GetParts(1).IsBodyResident());
  EXPECT_TRUE(kept.GetParts(1).GetFileContent() == large);
}

TEST_F(MailFileTest, OneBodyAtATimeStaysInMemory) {
  Write(Mail("first\r\n", "second"));
  TMail mail;
  mail.KeepBodies = false;
  mail.LoadFromFile(file_);
  TMailPart& first = mail.GetParts(0);
  TMailPart& second = mail.GetParts(1);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(first.DecodedContent(), "first\r\n");
    EXPECT_TRUE(first.IsBodyResident());
    EXPECT_EQ(second.GetFileContent(), "second");
    EXPECT_FALSE(first.IsBodyResident());
    EXPECT_EQ(first.ShareBody()->Count(), 2u);
    EXPECT_FALSE(second.IsBodyResident());
    mail.ReleaseBody();
    EXPECT_FALSE(first.IsBodyResident());
  }
  const auto held = second.ShareBody();
  mail.ReleaseBody();
  EXPECT_EQ(held->Text(), "second\r\n");
  EXPECT_EQ(second.ShareBody(), held);
  first.ShareBody()->Add("added");
  mail.ReleaseBody();
  EXPECT_EQ(first.DecodedContent(), "first\r\n\r\nadded");
}

TEST_F(MailFileTest, ABodyReadAgainIsTheSame) {
  for (const bool shared : {false, true}) {
    Write(Mail("first", "second"));
    TMail mail;
    mail.KeepBodies = false;
    mail.LoadFromFile(file_);
    const size_t size = mail.GetParts(0).DecodedContent(nullptr);
    if (shared) mail.GetParts(0).ShareBody();
    mail.ReleaseBody();
    Write(Mail("other", "second"));  // its buffer could be too small for what is there now
    std::string buffer(size, '\0');
    EXPECT_THROW(mail.GetParts(0).DecodedContent(buffer.data()), EError);
    EXPECT_EQ(mail.GetParts(1).DecodedContent(), "second");
    Write(Mail("first", "second"));
    EXPECT_EQ(mail.GetParts(0).DecodedContent(), "first");
  }
}

TEST_F(MailFileTest, ABodyReadAgainHasTheSameLines) {
  // Split at a lone CR only where it was from the start.
  Write(Mail("lone\rCR", std::string(100000, 'x')));
  for (const bool keep : {false, true}) {
    TMail mail;
    mail.KeepBodies = keep;
    mail.Releasable = keep;
    mail.LoadFromFile(file_);
    TMailPart& part = mail.GetParts(0);
    for (int i = 0; i < 3; ++i) {
      mail.ReleaseBodies();
      EXPECT_FALSE(part.IsBodyResident());
      EXPECT_EQ(part.ShareBody()->Count(), keep ? 1u : 2u);
    }
  }
}

TEST_F(MailFileTest, ADeferredBodyWithoutItsFileIsEmpty) {
  Write(Mail("a", "b"));
  TMail mail;
  mail.KeepBodies = false;
  mail.LoadFromFile(file_);
  platform::RemoveFile(file_);
  EXPECT_TRUE(mail.GetParts(0).GetBody().IsEmpty());
  EXPECT_FALSE(mail.GetParts(0).IsBodyResident());
  Write(Mail("a", "b"));
  EXPECT_EQ(mail.GetParts(0).GetBody().Count(), 1u);
}

TEST_F(MailFileTest, AMailThatFailedToLoadIsNotWrittenBack) {
  const std::string text = "A: b\r\n\x01: c\r\n\r\nbody";
  Write(text);
  TMail mail;
  EXPECT_THROW(mail.LoadFromFile(file_), EMailHeaderError);
  EXPECT_TRUE(mail.LoadFailed());
  EXPECT_EQ(mail.GetTextCount() + mail.GetAttachmentCount(), 0u);
  mail.SetSubject("s");
  EXPECT_THROW(mail.SaveToFile(file_), EError);
  std::string upper = file_;
  upper[0] = static_cast<char>(upper[0] ^ 0x20);  // the drive letter in the other case
  EXPECT_THROW(mail.SaveToFile(upper), EError);
  EXPECT_EQ(Read(), text);
  mail.SaveToFile(folder_.Path("other"));
  mail.SetFileName("now it is told of a change");
  EXPECT_EQ(mail.GetAttachmentCount(), 1u);
  Write("A: b\r\n\r\n");
  mail.LoadFromFile(file_);
  EXPECT_FALSE(mail.LoadFailed());
  mail.SaveToFile(file_);
  EXPECT_THROW(mail.SaveToFile(folder_.Path("none") + "\\mail"), EFileCreateError);
  EXPECT_THROW(mail.LoadFromFile(folder_.Path("none")), platform::EPlatformError);
  EXPECT_TRUE(mail.LoadFailed());
}

}  // namespace
}  // namespace quarda
