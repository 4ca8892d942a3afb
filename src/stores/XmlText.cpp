// The tag scanner behind the XML lookups. Every step looks for a terminator and gives up
// on the rest of the document when it is missing, so truncated files end the scan early
// instead of reading past the text.
#include "stores/XmlText.hpp"

#include "base/AsciiText.hpp"

#include "stores/StoreRow.hpp"

namespace corvandell {

namespace {

enum class TagKind { Start, End, SelfClosing, Other };

struct Tag {
    TagKind kind = TagKind::Other;
    std::string_view name;
    std::string_view attributes;
    size_t begin = 0; // the "<"
    size_t end = 0;   // just past the ">"
};

bool isNameEnd(char c) {
    return isAsciiBlank(c) || c == '/' || c == '>';
}

// Markup that is not an element (comment, CDATA, declaration): from `open` past the
// terminator, which is searched for after the opening `skip` characters.
std::optional<Tag> markupEndingWith(std::string_view xml, size_t open, size_t skip,
                                    std::string_view terminator) {
    const size_t close = xml.find(terminator, open + skip);
    if (close == std::string_view::npos) {
        return std::nullopt;
    }
    return Tag{TagKind::Other, {}, {}, open, close + terminator.size()};
}

// A start or end tag; quoted attribute values may hold ">".
std::optional<Tag> elementTag(std::string_view xml, size_t open) {
    const bool isEnd = xml[open + 1] == '/';
    size_t nameEnd = open + (isEnd ? 2 : 1);
    while (nameEnd < xml.size() && !isNameEnd(xml[nameEnd])) {
        ++nameEnd;
    }
    char quote = 0;
    for (size_t i = nameEnd; i < xml.size(); ++i) {
        if (quote != 0) {
            quote = xml[i] == quote ? 0 : quote;
        } else if (xml[i] == '"' || xml[i] == '\'') {
            quote = xml[i];
        } else if (xml[i] == '>') {
            const bool isSelfClosing = !isEnd && i > nameEnd && xml[i - 1] == '/';
            const size_t nameStart = open + (isEnd ? 2 : 1);
            const TagKind kind = isEnd ? TagKind::End : isSelfClosing ? TagKind::SelfClosing : TagKind::Start;
            return Tag{kind, xml.substr(nameStart, nameEnd - nameStart),
                       xml.substr(nameEnd, i - nameEnd - (isSelfClosing ? 1 : 0)), open, i + 1};
        }
    }
    return std::nullopt;
}

// The next tag, comment, CDATA section or declaration at or after `from`.
std::optional<Tag> nextTag(std::string_view xml, size_t from) {
    const size_t open = xml.find('<', from);
    if (open == std::string_view::npos || open + 1 >= xml.size()) {
        return std::nullopt;
    }
    const std::string_view rest = xml.substr(open);
    if (rest.starts_with("<!--")) {
        return markupEndingWith(xml, open, 4, "-->");
    }
    if (rest.starts_with("<![CDATA[")) {
        return markupEndingWith(xml, open, 9, "]]>");
    }
    if (rest.starts_with("<?")) {
        return markupEndingWith(xml, open, 2, "?>");
    }
    if (rest.starts_with("<!")) {
        return markupEndingWith(xml, open, 2, ">");
    }
    return elementTag(xml, open);
}

// The end tag that closes the element of `name` whose content starts at `from`.
std::optional<Tag> closingTag(std::string_view xml, size_t from, std::string_view name) {
    int depth = 1;
    for (auto tag = nextTag(xml, from); tag; tag = nextTag(xml, tag->end)) {
        if (tag->name != name) {
            continue;
        }
        if (tag->kind == TagKind::Start) {
            ++depth;
        } else if (tag->kind == TagKind::End && --depth == 0) {
            return tag;
        }
    }
    return std::nullopt;
}

} // namespace

std::vector<XmlElement> findXmlElements(std::string_view xml, std::string_view name) {
    std::vector<XmlElement> elements;
    for (auto tag = nextTag(xml, 0); tag; tag = nextTag(xml, tag->end)) {
        if (tag->name != name || tag->kind == TagKind::End) {
            continue;
        }
        if (tag->kind == TagKind::SelfClosing) {
            elements.push_back({tag->attributes, {}});
            continue;
        }
        const auto close = closingTag(xml, tag->end, name);
        if (!close) {
            break;
        }
        elements.push_back({tag->attributes, xml.substr(tag->end, close->begin - tag->end)});
        tag = close;
    }
    return elements;
}

std::optional<XmlElement> firstXmlElement(std::string_view xml, std::string_view name) {
    auto elements = findXmlElements(xml, name);
    if (elements.empty()) {
        return std::nullopt;
    }
    return elements.front();
}

std::optional<std::string> xmlAttribute(const XmlElement& element, std::string_view name) {
    const std::string_view text = element.attributes;
    size_t pos = 0;
    while (pos < text.size()) {
        while (pos < text.size() && isAsciiBlank(text[pos])) {
            ++pos;
        }
        const size_t nameStart = pos;
        while (pos < text.size() && text[pos] != '=' && !isAsciiBlank(text[pos])) {
            ++pos;
        }
        const std::string_view attributeName = text.substr(nameStart, pos - nameStart);
        while (pos < text.size() && isAsciiBlank(text[pos])) {
            ++pos;
        }
        if (pos + 1 >= text.size() || text[pos] != '=') {
            return std::nullopt;
        }
        pos = text.find_first_not_of(" \t\r\n", pos + 1);
        if (pos == std::string_view::npos || (text[pos] != '"' && text[pos] != '\'')) {
            return std::nullopt;
        }
        const size_t close = text.find(text[pos], pos + 1);
        if (close == std::string_view::npos) {
            return std::nullopt;
        }
        if (attributeName == name) {
            return decodeXmlEntities(text.substr(pos + 1, close - pos - 1));
        }
        pos = close + 1;
    }
    return std::nullopt;
}

std::string xmlText(const XmlElement& element) {
    const std::string_view content = element.content;
    std::string text;
    size_t pos = 0;
    for (auto tag = nextTag(content, 0); tag; tag = nextTag(content, pos)) {
        text += decodeXmlEntities(content.substr(pos, tag->begin - pos));
        const std::string_view markup = content.substr(tag->begin, tag->end - tag->begin);
        if (markup.starts_with("<![CDATA[")) {
            text += markup.substr(9, markup.size() - 12);
        }
        pos = tag->end;
    }
    text += decodeXmlEntities(content.substr(std::min(pos, content.size())));
    return std::string(trimAsciiBlanks(text));
}

} // namespace corvandell
