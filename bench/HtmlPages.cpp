#include "HtmlPages.h"

#include "MailFactory.h"

namespace quarda::bench {

namespace {

std::string Repeat(std::string_view piece, size_t size) {
  std::string text;
  text.reserve(size + piece.size());
  while (text.size() < size) text += piece;
  return text;
}

/// Half of the size each.
std::string Nested(std::string_view open, std::string_view close, size_t size) {
  const size_t count = size / (open.size() + close.size());
  return Repeat(open, count * open.size()) + Repeat(close, count * close.size());
}

std::string Attributes(size_t count) {
  std::string tag = "<object";
  for (size_t i = 0; i < count; ++i) tag += " a" + std::to_string(i) + "=1";
  return tag + " classid=x>";
}

}  // namespace

std::string FriendlyPage(size_t size) {
  TRandom random(7);
  std::string html = "<html><head><title>News</title></head><body bgcolor=\"#ffffff\">\r\n<table>";
  for (size_t row = 0; html.size() < size; ++row) {
    const std::string number = std::to_string(random.Below(100000));
    html +=
        "<tr><td width=\"600\" style=\"padding:0 4px; font-family:Arial,sans-serif\">\r\n"
        "<p class='text'>The summer offers of our garden department are here: order until "
        "Monday and save the delivery.</p>\r\n<a href=\"https://example.com/offer?id=" +
        number + "\" target=_blank><img src='https://example.com/i/" + number +
        ".png' width=120 height=90 alt=\"\"></a><br>\r\n</td></tr>\r\n";
    if (row % 64 == 20) html += "<script type=\"text/javascript\">count(" + number + ");</script>";
    if (row % 64 == 40) html += "<object classid='clsid:" + number + "'><b>movie</b></object>";
    if (row % 64 == 60) html += "<iframe src=\"http://example.com/" + number + "\"></iframe>";
  }
  return html + "</table></body></html>\r\n";
}

std::vector<TPage> HostilePages(size_t size) {
  return {
      {"unclosed <script>", Repeat("<script>", size)},
      {"closed <script>", Repeat("<script></script>", size)},
      {"<script> in each other", Nested("<script>", "</script>", size)},
      {"one </script> at the very end", Repeat("<script>", size) + "</script>"},
      {"unclosed <object>", Repeat("<object classid=1>", size)},
      {"<object> in each other", Nested("<object classid=1>", "</object>", size)},
      {"one </object> at the very end", Repeat("<object classid=1>", size) + "</object>"},
      {"unclosed <iframe>", Repeat("<iframe>", size)},
      {"closed <iframe>", Repeat("<iframe></iframe>", size)},
      {"<iframe> in each other", Nested("<iframe>", "</iframe>", size)},
      {"writing script full of <", "<script><iframe><!--" + Repeat("<", size) + "--></script>"},
      {"comment that never ends", "<!--" + Repeat("<script>", size)},
      {"one tag without end", "<object classid='" + Repeat("a ", size)},
      {"one tag of 100,000 attributes", Attributes(size / 10)},
      {"nothing but <", Repeat("<", size)},
      {"nothing but <?a", Repeat("<?a", size)},
      {"nothing but <>", Repeat("<>", size)},
  };
}

}  // namespace quarda::bench
