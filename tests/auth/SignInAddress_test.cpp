#include "auth/SignInAddress.hpp"

#include <gtest/gtest.h>

namespace corvandell {
namespace {

TEST(SignInAddress, PercentDecodesValidEscapesAndKeepsTheRest) {
    const struct {
        std::string text;
        std::string decoded;
    } cases[] = {
        {"a%20b", "a b"},
        {"%e2%82%ac", "\xe2\x82\xac"},
        {"%00x", std::string("\0x", 2)},
        {"100%", "100%"},
        {"%zz%41", "%zzA"},
        {"%%41", "%A"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(percentDecode(c.text), c.decoded) << c.text;
    }
}

TEST(SignInAddress, TakesTokensFromTheFragmentThenTheQueryThenTheWholeText) {
    const struct {
        const char* name;
        std::string address;
        std::string access;
        std::string refresh;
    } cases[] = {
        {"fragment", "http://127.0.0.1:38517/#access_token=cva_1&refresh_token=cvr_1&token_type=Bearer",
         "cva_1", "cvr_1"},
        {"fragment wins over query", "http://x/?access_token=fromquery#access_token=fromfragment",
         "fromfragment", ""},
        {"a fragment without tokens still wins", "http://x/?access_token=q#state=1", "", ""},
        {"bare parameters", "access_token=a&refresh_token=b", "a", "b"},
        {"values are percent-decoded", "#access_token=a%2Bb%3D&refresh_token=c%26d", "a+b=", "c&d"},
        {"no access token", "#refresh_token=r", "", "r"},
        {"names must match exactly", "#xaccess_token=a&access_tokenx=b&Access_Token=c", "", ""},
        {"pieces without '=' are skipped", "#access_token&access_token=z&&", "z", ""},
    };
    for (const auto& c : cases) {
        const AddressTokens tokens = tokensFromAddress(c.address);
        EXPECT_EQ(tokens.accessToken, c.access) << c.name;
        EXPECT_EQ(tokens.refreshToken, c.refresh) << c.name;
    }
}

TEST(SignInAddress, ReadsTheVerificationTokenFromALinkOrABareToken) {
    const struct {
        const char* name;
        std::string link;
        std::string token;
    } cases[] = {
        {"the mailed link", "http://127.0.0.1:1/api/v1/auth/public-key/verify?token=Abc-_1", "Abc-_1"},
        {"surrounding blanks are trimmed", " \t\r\nhttp://h/verify?token=Abc\r\n ", "Abc"},
        {"cut at '&'", "http://h/verify?token=Abc&utm=1", "Abc"},
        {"percent-decoded", "http://h/verify?token=a%2Db%20c", "a-b c"},
        {"a bare token", "  Abc-_1\n", "Abc-_1"},
        {"inner blanks are kept", "to ken", "to ken"},
        {"nothing after token=", "http://h/verify?token=", ""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(verificationTokenFromLink(c.link), c.token) << c.name;
    }
}

} // namespace
} // namespace corvandell
