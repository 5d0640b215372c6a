// The mail as plug-ins see it: identity, ownership and the operations that decide something.
#include <Errors.h>
#include <QDMailAdapters.h>
#include <QDStringsAdapters.h>
#include <Streams.h>
#include <TempFolder.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>

namespace quarda {
namespace {

constexpr const char* kMail =
    "Received: 1\r\nReceived: 2\r\nTo: a@b, \"C\" <c@d>\r\n"
    "Content-Type: multipart/mixed; boundary=B\r\n\r\npreamble\r\n--B\r\n"
    "Content-Transfer-Encoding: base64\r\nContent-Type: text/plain; name=n\r\n\r\nQUJD\r\n--B\r\n"
    "Content-Disposition: attachment; filename=f.txt\r\n\r\nx\r\n--B--\r\n\r\n";

class MailAdapterTest : public testing::Test {
 protected:
  MailAdapterTest() {
    TMemoryStream stream{std::string_view(kMail)};
    model_.LoadFromStream(stream);
  }

  TMail model_;
  TRef<IMail> mail_ = MailAdapter(model_);
};

TEST_F(MailAdapterTest, IsOneObjectBehindAllItsInterfaces) {
  const auto identity = [](const auto& ref) { return ref.template As<IRefCounted>().Get(); };
  const auto attachment = mail_.As<IMailAttachment>();
  const auto text = attachment.As<IMailText>();
  ASSERT_TRUE(attachment && text && text.As<IMail>());
  EXPECT_EQ(identity(attachment), identity(mail_));
  EXPECT_EQ(identity(attachment.As<IMailPart>()), identity(mail_));
  EXPECT_EQ(attachment.As<IMailPart>(), mail_.As<IMailPart>());
  EXPECT_FALSE(mail_.As<IHeader>());

  EXPECT_EQ(mail_->GetHeader(), mail_->GetHeader());
  EXPECT_EQ(mail_->GetBody(), mail_->GetBody());
  const TRef<IMailPart> one = mail_->GetParts(0);
  const TRef<IMailPart> other = mail_->GetParts(0);
  EXPECT_FALSE(one == other);
  one->SetContentType("text/html");
  EXPECT_EQ(other->GetContentType(), "text/html");
  EXPECT_EQ(one->GetOwner()->GetCount(), 2);
  EXPECT_FALSE(mail_->GetOwner());
}

TEST_F(MailAdapterTest, ShowsFieldsAsLists) {
  const TRef<IHeader> header = mail_->GetHeader();
  const TRef<IHeaderItem> second = header->GetItems(1);
  EXPECT_EQ(second->GetValue(), "2");
  EXPECT_EQ(header->IndexOfItem(second.Get()), 0) << "found by its name";
  EXPECT_EQ(header->IndexOfItem(nullptr), -1);
  EXPECT_EQ(second->GetValues(), second->GetValues());
  second->GetValues()->Add("x=y");
  EXPECT_EQ(second->GetValuesAsText(), "2; x=y");
  second->SetValues(nullptr);
  EXPECT_EQ(second->GetCount(), 0);
  EXPECT_FALSE(header->GetHeader("none"));
  second->Delete();
  EXPECT_EQ(header->GetCount(), 3);
  EXPECT_THROW(second->GetName(), EError);
  EXPECT_THROW(header->GetItems(-1), EListError);
  const TRef<IHeader> copy = mail_->GetParts(0)->GetHeader();
  copy->Assign(header.Get());
  EXPECT_EQ(copy->GetHeaderStr("Content-Type"), "multipart/mixed");
  EXPECT_EQ(copy->GetHeader("content-type")->GetCount(), 2);
  copy->Assign(nullptr);
  EXPECT_EQ(copy->GetCount(), 0);
}

TEST_F(MailAdapterTest, ReadsAndReplacesTexts) {
  ASSERT_EQ(mail_->GetTextCount(), 1);
  const TRef<IMailText> text = mail_->GetTexts(0);
  EXPECT_EQ(text->GetText(), "ABC");
  text->SetText("abcd");
  EXPECT_EQ(text->GetBody()->GetStrings(0), "YWJjZA==");
  EXPECT_EQ(text->GetEncodeType(), eBase64);
  EXPECT_EQ(text->DecodedContent(nullptr), 6u);
  EXPECT_EQ(text.As<IMailAttachment>()->GetFileName(), "n") << "a text has its name only";
  EXPECT_EQ(mail_->GetAttachments(0)->GetFileName(), "f.txt");
  EXPECT_THROW(mail_->GetAttachments(1), EListError);
}

TEST_F(MailAdapterTest, CopiesAndTurnsWholeParts) {
  const TRef<IMailPart> part = mail_->Add();
  const auto copied = [&](const TRef<IMailPart>& target) {
    return target->GetCount() == 2 && target->GetBody()->GetText() == "preamble\r\n" &&
           target->GetParts(0)->GetBody()->GetText() == "QUJD\r\n" &&
           target->GetParts(1)->IsAttachment() && target->GetHeader()->GetCount() == 4;
  };
  auto other = std::make_unique<TMail>();
  TMemoryStream stream{std::string_view(kMail)};
  other->LoadFromStream(stream);
  const TRef<IMail> source = MailAdapterOwned(std::move(other));
  part->Assign(source.Get());
  EXPECT_TRUE(copied(part));
  part->Assign(source.Get());
  EXPECT_TRUE(copied(part)) << "over what was there";
  part->Assign(nullptr);
  EXPECT_EQ(part->GetCount() + part->GetBody()->GetCount() + part->GetHeader()->GetCount(), 0);
  mail_->Move(2, 0);
  EXPECT_EQ(mail_->GetParts(0)->GetHeader()->GetCount(), 0);
  mail_->Delete(0);
  mail_->Exchange(0, 1);
  EXPECT_TRUE(mail_->GetParts(0)->IsAttachment());
}

TEST_F(MailAdapterTest, ReadsAndWritesAddressLists) {
  const TRef<IStringList> list = mail_->GetToList();
  EXPECT_EQ(list->GetSeparateText("|"), "a@b|\"C\" <c@d>");
  mail_->ExtractEmailAddresses(list.Get());
  EXPECT_EQ(list->GetSeparateText("|"), "a@b|c@d");
  mail_->SetCcList(list.Get());
  EXPECT_EQ(mail_->GetCc(), "a@b\r\n\tc@d");
  mail_->SetToList(nullptr);
  EXPECT_EQ(mail_->GetTo(), "");
  EXPECT_GE(mail_->GetHeader()->IndexOf("To"), 0);
}

TEST_F(MailAdapterTest, APartIsNoMail) {
  const TRef<IMail> part = mail_->GetParts(1).As<IMail>();
  part->SetSubject("x");
  part->DeleteText(0);
  part->Reset();
  part->SetToList(nullptr);
  EXPECT_EQ(part->GetSubject(), "");
  EXPECT_EQ(part->GetAttachmentCount(), 0);
  EXPECT_FALSE(part->GetAttachments(0));
  EXPECT_FALSE(part->GetToList());
  EXPECT_EQ(part->GetHeader()->GetCount(), 1);
  const TRef<IStringList> list = NewStringListAdatper();
  list->Add("J <j@b>");
  part->ExtractEmailAddresses(list.Get());
  EXPECT_EQ(list->GetStrings(0), "J <j@b>");
  EXPECT_EQ(part->ExtractEmailAddress("J <j@b>"), "j@b");
}

TEST(MailAdapter, SavesWhatChangedAndForgetsItOnReset) {
  const TTempFolder folder;
  const std::string file = folder.Path("mail");
  const std::string original = std::string(kMail) + "dropped by writing";
  for (const bool keepBodies : {true, false}) {
    SCOPED_TRACE(keepBodies);
    folder.Write("mail", original);
    auto model = std::make_unique<TMail>();
    model->KeepBodies = keepBodies;
    model->LoadFromFile(file);
    const TRef<IMail> mail = MailAdapterOwned(std::move(model));
    const TRef<IStringList> body = mail->GetBody();
    mail->GetParts(1)->GetHeader()->SetHeaderStr("X", "y");
    mail->Save();
    EXPECT_TRUE(folder.Read("mail") == original) << "a part's field marks no mail";
    mail->SetSubject("s");
    body->Clear();
    mail->DeleteAttachment(0);
    EXPECT_EQ(mail->GetAttachmentCount(), 0);
    mail->Reset();
    EXPECT_EQ(mail->GetSubject(), "");
    EXPECT_EQ(mail->GetBody()->GetText(), "preamble\r\n");
    EXPECT_EQ(body->GetCount(), 1) << "the list given out before";
    EXPECT_EQ(mail->GetAttachmentCount(), 1);
    mail->SetSubject("s");
    mail->Save();
    std::string expected(kMail);
    expected.insert(expected.find("\r\n\r\n") + 2, "Subject: s\r\n");
    EXPECT_EQ(folder.Read("mail"), expected);
  }
}

}  // namespace
}  // namespace quarda
