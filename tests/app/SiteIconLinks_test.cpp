// Icon links from pages, including ones that try to climb out of the site.
#include "app/SiteIconLinks.hpp"

#include <gtest/gtest.h>

namespace corvandell {
namespace {

constexpr char kPage[] = "https://alice.github.io/tiny-tower/play/index.html?level=2";

TEST(SiteIconLinks, TakesTheIconLinksInPageOrderThenTheFavicons) {
    const std::vector<std::tuple<const char*, std::string, std::vector<std::string>>> cases{
        {"relative, absolute and rooted links; svg and stylesheets left out",
         R"(<html><head><LINK REL="stylesheet" href="a.css"><link rel="icon" type="image/svg+xml" href="i.svg?v=1">)"
         R"(<link rel='shortcut icon' href='img/fav.png?v=3#x'><link href=/root.ico rel=icon>)"
         R"(<link rel="apple-touch-icon" href="https://cdn.example.com/t.png"></head>)",
         {"https://alice.github.io/tiny-tower/play/img/fav.png", "https://alice.github.io/root.ico",
          "https://alice.github.io/tiny-tower/play/favicon.ico", "https://alice.github.io/favicon.ico"}},
        {"no links at all",
         "<html><body>hello</body></html>",
         {"https://alice.github.io/tiny-tower/play/favicon.ico", "https://alice.github.io/favicon.ico"}},
        {"links that climb out, use other schemes or name no icon",
         R"(<link rel="icon" href="../../secret.png"><link rel="icon" href="file:///C:/x.ico">)"
         R"(<link rel="icon" href="//evil.example/x.ico"><link rel="iconic" href="y.png">)"
         R"(<link rel="icon" href="data:image/png;base64,AAAA"><linkage rel="icon" href="z.png">)"
         R"(<link rel="icon" href="%2e%2e/ok.png"><link rel="icon">)",
         {"https://alice.github.io/tiny-tower/play/%2e%2e/ok.png",
          "https://alice.github.io/tiny-tower/play/favicon.ico", "https://alice.github.io/favicon.ico"}},
        {"a cut-off page",
         R"(<link rel="icon" href="cut.png)",
         {"https://alice.github.io/tiny-tower/play/cut.png",
          "https://alice.github.io/tiny-tower/play/favicon.ico", "https://alice.github.io/favicon.ico"}},
    };
    for (const auto& [name, html, expected] : cases) {
        EXPECT_EQ(iconCandidates(html, kPage), expected) << name;
    }
}

TEST(SiteIconLinks, ASiteAtItsRootHasOneFaviconAndAPageWithoutAddressNone) {
    EXPECT_EQ(iconCandidates("", "https://example.github.io"),
              (std::vector<std::string>{"https://example.github.io/favicon.ico"}));
    EXPECT_EQ(iconCandidates(R"(<link rel="icon" href="a.png">)", "index.html"), std::vector<std::string>{});
}

TEST(SiteIconLinks, RecognisesSvgAndMakesSafeCacheNames) {
    EXPECT_TRUE(isSvgReference("logo.SVG?v=2"));
    EXPECT_TRUE(isSvgReference("logo.svg#frag"));
    EXPECT_FALSE(isSvgReference("logo.svg.png"));
    EXPECT_EQ(iconCacheFileName("github:a/../b\\c"), "github_a____b_c");
    EXPECT_EQ(iconCacheFileName(std::string(300, 'k')).size(), 120u);
}

} // namespace
} // namespace corvandell

namespace corvandell {
namespace {

TEST(SiteIconLinks, AClonedGamesIconsStayInsideTheClone) {
    EXPECT_EQ(localIconCandidates(
                  R"(<link rel="icon" href="img/i.png"><link rel="icon" href="/top.ico">)"
                  R"(<link rel="icon" href="https://cdn.example/x.png"><link rel="icon" href="../x.ico">)",
                  "game/play.html"),
              (std::vector<std::string>{"game/img/i.png", "top.ico", "game/favicon.ico", "favicon.ico"}));
    EXPECT_EQ(localIconCandidates("", "index.html"), (std::vector<std::string>{"favicon.ico"}));
}

} // namespace
} // namespace corvandell
