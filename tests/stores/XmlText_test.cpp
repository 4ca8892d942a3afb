// Markup that must not match (comments, CDATA, longer names, quoted ">") and cut documents.
#include "stores/XmlText.hpp"

#include <gtest/gtest.h>

namespace corvandell {
namespace {

TEST(XmlText, FindsElementsTheirTextAndAttributesAndStopsAtDamage) {
    const struct {
        std::string_view xml, name, attribute; // attribute "" means the element's text
        std::vector<std::string> expected;     // "-" for a missing attribute
    } cases[] = {
        {R"(<a x="1"/><!-- <a x="2"/> --><b><a x='3 > 2' y="&lt;"></a></b>)", "a", "x", {"1", "3 > 2"}},
        {R"(<a y="1" x = "&quot;2&quot;"/><a/><a x=3/>)", "a", "x", {"\"2\"", "-", "-"}},
        {"<t>one &amp; <![CDATA[<two> &amp;]]> <i>three</i>\n</t>", "t", "", {"one & <two> &amp; three"}},
        {"<a><a>inner</a>outer</a><a>second</a>", "a", "", {"innerouter", "second"}},
        {"<gameTitles><gameTitle>x</gameTitle></gameTitles>", "gameTitles", "", {"x"}},
        {R"(<?xml version="1.0"?><!DOCTYPE a><![CDATA[<a>no</a>]]><a>v</a>)", "a", "", {"v"}},
        {"<a>open<a>closed</a>", "a", "", {}},
        {R"(<a>ok</a><a x="1)", "a", "", {"ok"}},
    };
    for (const auto& [xml, name, attribute, expected] : cases) {
        std::vector<std::string> found;
        for (const auto& element : findXmlElements(xml, name)) {
            found.push_back(attribute.empty() ? xmlText(element)
                                              : xmlAttribute(element, attribute).value_or("-"));
        }
        EXPECT_EQ(found, expected) << xml;
    }
}

} // namespace
} // namespace corvandell
