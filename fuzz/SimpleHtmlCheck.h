// The HTML checks told once more, slowly: one plain string for each page, and every rule a loop
// over it. What the real ones do is compared with this.
#pragma once

#include <CodePage.h>
#include <HtmlNeutraliser.h>
#include <HtmlReference.h>
#include <MiniHtmlParser.h>
#include <Utils.h>

#include <string>

namespace quarda {

/// A page after a check: its text, the log ("priority message" a line), the verdict.
struct TCheckedPage {
  std::string text;
  std::string log;
  bool isVirus = false;

  friend bool operator==(const TCheckedPage&, const TCheckedPage&) = default;
};

struct TSimpleWalk {
  TReferenceParser parser;
  int start = 0, end = 0;  // of the current tag when it was found

  explicit TSimpleWalk(const std::string& html) : parser{html} { parser.SetIndex(1); }

  bool Next() {
    if (!parser.Next()) return false;
    start = parser.tagStart;
    end = parser.index;
    return true;
  }
  void GoBack() {
    parser.tagStart = start;
    parser.index = end;
  }
  void Rename(TSimpleTag tag, const std::string& name) {
    if (parser.GotoClosingTag()) parser.ReplaceTag("</" + name + ">");
    GoBack();
    tag.name = name;
    parser.ReplaceTag(tag.Text());
  }
};

inline bool SimpleRemovesScript(TSimpleWalk& walk, const THtmlRules& rules) {
  if (rules.alwaysRemoveScripts || !walk.parser.GotoClosingTag()) return true;
  std::string script;
  for (int i = walk.end - 1; i < walk.parser.tagStart - 1; ++i) {
    script += platform::LowerAnsi(walk.parser.text[static_cast<size_t>(i)]);
  }
  bool remove = true;
  for (const char* written : {"<object", "<iframe", "<script"}) {
    if (script.find(written) != std::string::npos) remove = false;
  }
  for (const std::string& blocked : rules.blockedScripts) {
    if (script.find(blocked) != std::string::npos) remove = true;
  }
  return remove;
}

inline TCheckedPage SimpleNeutralise(const std::string& html, const THtmlRules& rules) {
  TCheckedPage page;
  TSimpleWalk walk(html);
  while (walk.Next()) {
    const std::string name = walk.parser.UpperName();
    TSimpleTag tag(walk.parser.GetTag());
    if (rules.disableActiveX && name == "OBJECT" && tag.ValueOf("classid") != "") {
      TSimpleAttr& classId = *tag.Find("classid");
      classId = {classId.name, "\"\""};
      walk.Rename(tag, "block_object");
      page.log += "Warning ActiveX element deactivated.\n";
    }
    if (rules.disableScripts && name == "SCRIPT" && SimpleRemovesScript(walk, rules)) {
      walk.GoBack();
      walk.parser.SetTagOuterHTML("");
      page.log += "Warning Script removed.\n";
    }
  }
  page.text = walk.parser.text;
  return page;
}

inline TCheckedPage SimpleIFrames(const std::string& html, TIFrameBlockMode mode) {
  TCheckedPage page;
  TSimpleWalk walk(html);
  while (walk.Next()) {
    if (walk.parser.UpperName() != "IFRAME") continue;
    TSimpleTag tag(walk.parser.GetTag());
    std::string source = tag.ValueOf("src");
    if (source.size() > 1 && (source[0] == '"' || source[0] == '\'') &&
        source.back() == source[0]) {
      source = source.substr(1, source.size() - 2);
    }
    const bool isHttp = platform::LowerAnsi(source.substr(0, 7)) == "http://";
    if (mode == ibmAllowHttp && isHttp) {
      page.log += "Extended Http-iframe found and ignored.\n";
    } else if (mode == ibmCommentAll || (mode == ibmCommentHttp && isHttp)) {
      walk.Rename(tag, "block_iframe");
      page.log += "Warning iframe found and changed to a comment.\n";
    } else if (mode == ibmRemove) {
      page.log += "Warning iframe found and removed.\n";
      walk.parser.SetTagOuterHTML("");
    } else {
      page.log += "Warning iframe found and marked as virus.\n";
      page.isVirus = true;
      page.text = html;
      return page;
    }
  }
  page.text = walk.parser.text;
  return page;
}

}  // namespace quarda
