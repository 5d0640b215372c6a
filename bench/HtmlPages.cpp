#include "HtmlPages.h"

#include "MailFactory.h"

namespace quarda::bench {

namespace {

/// Up to that size and a piece more.
std::string Filled(std::string_view piece, size_t size) {
  return Repeat(piece, (size + piece.size() - 1) / piece.size());
}

/// Half of the size each.
std::string Nested(std::string_view open, std::string_view close, size_t size) {
  const size_t count = size / (open.size() + close.size());
  return Repeat(open, count) + Repeat(close, count);
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

std::vector<TPage> HostilePages() {
  const auto filled = [](std::string_view piece) {
    return [piece](size_t size) { return Filled(piece, size); };
  };
  const auto nested = [](std::string_view open, std::string_view close) {
    return [open, close](size_t size) { return Nested(open, close, size); };
  };
  const auto between = [](std::string_view first, std::string_view piece, std::string_view last) {
    return [first, piece, last](size_t size) {
      return std::string(first) + Filled(piece, size) + std::string(last);
    };
  };
  return {
      {"unclosed <script>", filled("<script>")},
      {"closed <script>", filled("<script></script>")},
      {"<script> in each other", nested("<script>", "</script>")},
      {"one </script> at the very end", between("", "<script>", "</script>")},
      {"unclosed <object>", filled("<object classid=1>")},
      {"<object> in each other", nested("<object classid=1>", "</object>")},
      {"one </object> at the very end", between("", "<object classid=1>", "</object>")},
      {"unclosed <iframe>", filled("<iframe>")},
      {"closed <iframe>", filled("<iframe></iframe>")},
      {"<iframe> in each other", nested("<iframe>", "</iframe>")},
      {"writing script full of <", between("<script><iframe><!--", "<", "--></script>")},
      {"comment that never ends", between("<!--", "<script>", "")},
      {"one tag without end", between("<object classid='", "a ", "")},
      {"one tag of 100,000 attributes", [](size_t size) { return Attributes(size / 10); }},
      {"nothing but <", filled("<")},
      {"nothing but <?a", filled("<?a")},
      {"nothing but <>", filled("<>")},
  };
}

}  // namespace quarda::bench
