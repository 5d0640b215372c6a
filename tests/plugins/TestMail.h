// Real mails for the tests of plug-ins.
#pragma once

#include <MailRead.h>
#include <QDIntf.h>
#include <QDMailAdapters.h>
#include <Streams.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quarda {

inline TRef<IMail> MailFromText(std::string_view text) {
  auto mail = std::make_unique<TMail>();
  TMemoryStream stream(text);
  mail->LoadFromStream(stream);
  return MailAdapterOwned(std::move(mail));
}

inline TRef<IMail> MailWithSubject(const std::string& subject) {
  return MailFromText("Subject: " + subject + "\n\nHello\n");
}

inline TRef<IMail> MailWithAttachments(const std::vector<std::string>& names) {
  std::string text = "Content-Type: multipart/mixed; boundary=b\n\n";
  for (const std::string& name : names) {
    text += "--b\nContent-Disposition: attachment; filename=\"" + name + "\"\n\nx\n";
  }
  return MailFromText(text + "--b--\n");
}

}  // namespace quarda
