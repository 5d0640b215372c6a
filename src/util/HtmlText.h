// HTML as text: entities, removal of tags, line breaks.
#pragma once

#include <string>
#include <string_view>

namespace quarda {

/// Decodes the character entities of the German and French letters and of the markup characters.
/// An abbreviated name counts as the first full name that it begins; numeric references and unknown
/// names stay as they are.
std::string ConvHtmlToUml(std::string_view text);

/// The plain text of an HTML text: "<br>" and "<br />" become line breaks, every tag goes, entities
/// are decoded. An unclosed tag takes the rest of the text with it.
std::string RemoveHtmlTags(std::string_view text);

/// Inserts " <br>" after every line feed and puts "<br><hr><br>" at the end.
void LineBreakToBR(std::string& text);

/// The value, with its quotes, of the first attribute of that name (letter case ignored) in the
/// text of one tag. An attribute whose value is empty (`name=`) gives its name, an attribute
/// without "=" is passed over, and an absent one gives "".
std::string GetHtmlTagAttr(std::string_view tag, std::string_view attrName);

}  // namespace quarda
