// What the tests of the mail model share.
#pragma once

#include <MailRead.h>
#include <Streams.h>
#include <TempFolder.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

namespace quarda {

inline std::unique_ptr<TMail> Loaded(std::string_view text) {
  auto mail = std::make_unique<TMail>();
  TMemoryStream stream(text);
  mail->LoadFromStream(stream);
  return mail;
}

inline std::string Saved(TMail& mail) {
  std::string text;
  TStringStream stream(text);
  mail.SaveToStream(stream);
  return text;
}

/// Calls `use` with the text as a memory, a string and a file stream; the last one is read in
/// blocks.
template <class Use>
void ForEachKindOfStream(std::string_view text, Use use) {
  {
    SCOPED_TRACE("memory");
    TMemoryStream stream(text);
    use(stream);
  }
  {
    SCOPED_TRACE("string");
    std::string copy(text);
    TStringStream stream(copy);
    use(stream);
  }
  {
    SCOPED_TRACE("file");
    const TTempFolder folder;
    TFileStream stream(folder.Write("text", text), platform::TOpenMode::kRead);
    use(stream);
  }
}

}  // namespace quarda
