#include "Traps.h"

#include <HtmlNeutraliser.h>
#include <IniFile.h>
#include <MailRead.h>
#include <MailReadTnef.h>
#include <MiniHtmlParser.h>
#include <Process.h>
#include <Utils.h>

#include <algorithm>
#include <cstring>

#include "HtmlPages.h"
#include "MailFactory.h"

namespace quarda::bench {

namespace {

TTextBlock Block(const std::string& text) {
  TTextBlock block(text.size());
  if (!text.empty()) std::memcpy(block.Data(), text.data(), text.size());
  return block;
}

/// Everything that a chain of checks does with a mail.
size_t ReadWholly(const std::string& text) {
  TMemoryStream stream(Block(text));
  TMail mail;
  mail.LoadFromStream(stream);
  size_t seen = mail.GetSubject().size() + mail.GetFrom().size();
  TStringList addresses;
  mail.GetToList(addresses);
  seen += addresses.Count();
  for (size_t i = 0; i < mail.GetAttachmentCount(); ++i) {
    seen += mail.GetAttachments(i).GetFileName().size();
    seen += mail.GetAttachments(i).DecodedContent().size();
  }
  for (size_t i = 0; i < mail.GetTextCount(); ++i) {
    seen += mail.GetTexts(i).DecodedContent().size();
  }
  TMemoryStream saved;
  mail.SaveToStream(saved);
  return seen + saved.View().size();
}

size_t ReadContainer(const std::string& text) {
  TMemoryStream stream(Block(text));
  TTnef tnef;
  tnef.LoadFromStream(stream);
  return tnef.GetCount();
}

size_t MakeHarmless(const std::string& html) {
  size_t seen = 0;
  const auto count = [&](int32_t, std::string_view) { ++seen; };
  NeutraliseHtml(html, {true, true, true, {"evil", "worm"}}, count);
  BlockIFrames(html, ibmRemove, count);
  return seen;
}

size_t ReadAttributes(const std::string& text) {
  TAttrList attributes;
  attributes.Parse(text);
  attributes.SetValue("last", "new");
  return static_cast<size_t>(attributes.GetCount()) + attributes.GetAsString().size();
}

/// Reads settings, asks for every value, deletes a section and writes the text again.
size_t UseSettings(const std::string& text) {
  TIniFile ini;
  ini.SetText(text);
  const TStringList names = ini.SectionNames();
  size_t seen = 0;
  for (size_t i = 0; i < names.Count(); ++i) {
    ini.SetValue(names[i], "key", "value");
    seen += ini.Value(names[i], "key1").value_or("").size();
  }
  if (!names.IsEmpty()) ini.DeleteSection(names[names.Count() / 2]);
  return seen + ini.Text().size();
}

size_t UseManyKeys(const std::string& text) {
  TIniFile ini;
  ini.SetText(text);
  const size_t lines = static_cast<size_t>(std::ranges::count(text, '\n'));
  size_t seen = 0;
  for (size_t i = 0; i < lines; ++i) {
    const std::string key = "key" + std::to_string(i);
    seen += ini.Value("s", key).value_or("").size();
    if (i % 2 == 0) ini.DeleteValue("s", key);
  }
  return seen + ini.Text().size();
}

std::string Numbered(std::string_view before, std::string_view after, size_t n) {
  std::string text;
  for (size_t i = 0; i < n; ++i) text.append(before).append(std::to_string(i)).append(after);
  return text;
}

auto Repeating(std::string_view piece) {
  return [piece](size_t n) { return Repeat(piece, n); };
}

size_t ReplaceMacros(const std::string& text) {
  return ReplaceMacrosEx(text,
                         [](std::string& macro) {
                           macro = "value";
                           return true;
                         })
      .size();
}

void AddMails(std::vector<TTrap>& traps) {
  for (const TShape& shape : HostileShapes()) {
    traps.push_back({shape.name, shape.n, shape.make, ReadWholly});
  }
  traps.push_back({"all of it in one mail", 40000, AllShapesMail, ReadWholly});
}

void AddPages(std::vector<TTrap>& traps) {
  constexpr size_t kSize = 1 << 20;
  for (const TPage& page : HostilePages()) {
    traps.push_back({page.name, kSize, page.make, MakeHarmless});
  }
  traps.push_back({"attributes", 200000, [](size_t n) { return "tag " + Numbered("a", "=b ", n); },
                   ReadAttributes});
  traps.push_back({"attributes of one name", 200000, Repeating("a=b "), ReadAttributes});
}

void AddTexts(std::vector<TTrap>& traps) {
  const auto size = [](auto function) {
    return [function](const std::string& text) { return function(text).size(); };
  };
  const auto matches = [](const std::string& pattern) {
    return size_t{MatchText(std::string(pattern.size(), 'a'), pattern)};
  };
  const auto isListed = [](const std::string& list) { return size_t{IsInNumberList(7, list)}; };
  traps.insert(
      traps.end(),
      {{"wildcards: *a*a*a ... b", 500000, [](size_t n) { return Repeat("*a", n) + "b"; }, matches},
       {"wildcards: stars", 1000000, Repeating("*"), matches},
       {"numbers", 500000, Repeating("1000,"), isListed},
       {"ranges of numbers", 500000, Repeating("8-65535,"), isListed},
       {"macros: $", 1000000, Repeating("$"), ReplaceMacros},
       {"macros: $x$", 500000, Repeating("$x$"), ReplaceMacros},
       {"escapes: \\", 1000000, Repeating("\\"), size(CTextToText)},
       {"escapes: \\x", 1000000, Repeating("\\x"), size(CTextToText)},
       {"entities: &", 1000000, Repeating("&"), size(ConvHtmlToUml)},
       {"entities: &amp", 500000, Repeating("&amp"), size(ConvHtmlToUml)},
       {"tags to text: <", 1000000, Repeating("<"), size(RemoveHtmlTags)},
       {"tags to text: <!--", 500000, Repeating("<!--"), size(RemoveHtmlTags)},
       {"command line: quotes", 1000000, Repeating("\" "), size(platform::SplitProgramLine)},
       {"command line: \\", 1000000, Repeating("\\"), size(platform::SplitProgramLine)}});
}

void AddFiles(std::vector<TTrap>& traps) {
  traps.insert(
      traps.end(),
      {{"container: files", 100000, [](size_t n) { return Container(n, 1, 5); }, ReadContainer},
       {"settings: sections", 100000, [](size_t n) { return Numbered("[s", "]\r\nkey1=2\r\n", n); },
        UseSettings},
       {"settings: two sections by turns", 200000, Repeating("[a]\r\nx\r\n[b]\r\ny\r\n"),
        UseSettings},
       {"settings: keys", 100000, [](size_t n) { return "[s]\r\n" + Numbered("key", "=1\r\n", n); },
        UseManyKeys},
       {"settings: one key", 200000, [](size_t n) { return "[s]\r\n" + Repeat("key1=1\r\n", n); },
        UseManyKeys}});
}

}  // namespace

std::vector<TTrap> Traps() {
  std::vector<TTrap> traps;
  AddMails(traps);
  AddPages(traps);
  AddTexts(traps);
  AddFiles(traps);
  return traps;
}

}  // namespace quarda::bench
