// Real mails for the tests of plug-ins.
#pragma once

#include <MailRead.h>
#include <QDIntf.h>
#include <QDMailAdapters.h>
#include <Streams.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

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

/// The names stand between bars.
inline TRef<IMail> MailWithAttachments(std::string_view names) {
  std::string text = "Content-Type: multipart/mixed; boundary=b\n\n";
  for (; !names.empty(); names.remove_prefix(std::min(names.find('|'), names.size() - 1) + 1)) {
    text += "--b\nContent-Disposition: attachment; filename=\"";
    text.append(names.substr(0, names.find('|'))).append("\"\n\nx\n");
  }
  return MailFromText(text + "--b--\n");
}

}  // namespace quarda
