// Finding an element's text or attribute in the small XML documents stores leave beside
// their games (MicrosoftGame.config, installerdata.xml).
//
// Deliberately not a parser: a scan over tags that skips comments, processing instructions
// and CDATA, and pairs a start tag with its end tag by counting elements of the same name.
// Damaged documents never fail; they just yield fewer elements.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvandell {

struct XmlElement {
    std::string_view attributes; // the raw text between the element's name and its ">"
    std::string_view content;    // between the start and end tags; empty when self-closing
};

// The elements named `name` in the document, in order. The content of a match is not
// searched again, so an element nested in another of the same name is not listed. An
// element whose end tag is missing is not listed either.
std::vector<XmlElement> findXmlElements(std::string_view xml, std::string_view name);

// The first of findXmlElements.
std::optional<XmlElement> firstXmlElement(std::string_view xml, std::string_view name);

// The attribute's value with entities decoded; nothing when it is absent.
std::optional<std::string> xmlAttribute(const XmlElement& element, std::string_view name);

// The element's character data with entities decoded, CDATA kept verbatim, child tags
// dropped and surrounding blanks trimmed.
std::string xmlText(const XmlElement& element);

} // namespace corvandell
