#include "Libxml2Reader.h"

#ifdef QD_BENCH_LIBXML2

#include <libxml/HTMLparser.h>

namespace quarda::bench {

namespace {

void CountElement(void* count, const xmlChar*, const xmlChar**) { ++*static_cast<size_t*>(count); }

}  // namespace

size_t Libxml2Elements(std::string_view html) {
  size_t elements = 0;
  htmlSAXHandler handler{};
  handler.startElement = CountElement;
  htmlParserCtxtPtr parser =
      htmlCreatePushParserCtxt(&handler, &elements, nullptr, 0, nullptr, XML_CHAR_ENCODING_8859_1);
  htmlCtxtUseOptions(parser, HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING);
  htmlParseChunk(parser, html.data(), static_cast<int>(html.size()), 0);
  htmlParseChunk(parser, nullptr, 0, 1);
  htmlFreeParserCtxt(parser);
  return elements;
}

}  // namespace quarda::bench

#else

namespace quarda::bench {

size_t Libxml2Elements(std::string_view) { return 0; }

}  // namespace quarda::bench

#endif
