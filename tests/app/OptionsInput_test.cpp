#include "app/OptionsInput.hpp"

#include "base/AsciiText.hpp"
#include "base/Utf8Path.hpp"
#include "support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvandell {
namespace {

// What is typed, the value stored when it is accepted, and the message when it is not ("").
template <class Value> struct Case {
    std::string text;
    Value value;
    std::string error;
};

template <class Value, class Check> void expectCases(const std::vector<Case<Value>>& cases, Check check) {
    for (const auto& [text, value, error] : cases) {
        const CheckedInput<Value> checked = check(text);
        EXPECT_EQ(checked.error, error) << "'" << text << "'";
        if (error.empty()) {
            EXPECT_EQ(checked.value, value) << "'" << text << "'";
        }
    }
}

TEST(OptionsInput, DownloadLimitIsAWholeNumberOfKbpsWithZeroOrNothingForNoLimit) {
    const std::string notANumber = "The download limit must be a whole number of KB/s (0 for no limit).";
    const std::string tooLarge = "The download limit can be at most 1000000 KB/s (0 for no limit).";
    expectCases<int>(
        {
            {"", 0, ""},
            {" 2048 ", 2048, ""},
            {"1000000", 1000000, ""},
            {"1000001", 0, tooLarge},
            {"99999999999999999999999", 0, tooLarge},
            {"-1", 0, notANumber},
            {"1.5", 0, notANumber},
        },
        &checkDownloadLimit);
}

TEST(OptionsInput, VolumesArePercentagesFromZeroToTwoHundred) {
    const std::string outOfRange = "The output volume must be a whole number from 0 to 200 (%).";
    expectCases<int>(
        {
            {" 200", 200, ""},
            {"201", 0, outOfRange},
            {"", 0, outOfRange},
            {"50%", 0, outOfRange},
        },
        [](std::string_view text) { return checkVolume(text, "output"); });
}

std::string repeated(std::string_view text, int times) {
    std::string out;
    for (int i = 0; i < times; ++i) {
        out += text;
    }
    return out;
}

TEST(OptionsInput, ServiceAddressIsHttpsHostAndPortOnlyWithHttpKeptForThisComputer) {
    const std::string onlyOrigin = "The service address is only the scheme, host and port, such as "
                                   "https://api.example.com (no path, query or user name).";
    const std::string badHost = "The service address has no valid host name or port.";
    const std::string plainHttp = "Use an https:// address: plain http is allowed only for this computer "
                                  "(localhost), since every request carries your session.";
    const std::string noScheme =
        "The service address must start with https://, such as https://api.example.com.";
    expectCases<std::string>(
        {
            {"  HTTPS://API.Example.COM/ ", "https://api.example.com", ""},
            {"https://api.example.com:8443", "https://api.example.com:8443", ""},
            {"http://localhost:8080/", "http://localhost:8080", ""},
            {"http://[::1]:9000", "http://[::1]:9000", ""},
            {"", "", "Enter the service address, such as https://api.example.com."},
            {"ftp://api.example.com", "", noScheme},
            {"http://api.example.com", "", plainHttp},
            {"http://127.0.0.2", "", plainHttp},
            {"https://api.example.com/v1", "", onlyOrigin},
            {"https://user@api.example.com", "", onlyOrigin},
            {"https://api.example.com:65536", "", badHost},
            {"https://api..example.com", "", badHost},
            {"https://[::1", "", badHost},
        },
        &checkServiceAddress);
}

TEST(OptionsInput, NicknameIsOneToThirtyTwoCharactersWithoutControlCharacters) {
    const std::string tooLong = "A nickname can be at most 32 characters.";
    const std::string control = "A nickname cannot contain control characters such as tabs or line breaks.";
    expectCases<std::string>(
        {
            {"  Ada Lovelace  ", "Ada Lovelace", ""},
            {repeated("\xC3\xA9", 32), repeated("\xC3\xA9", 32), ""},
            {std::string(33, 'x'), "", tooLong},
            {" \t ", "", "Enter a nickname."},
            {"Ada\nL", "", control},
        },
        &checkNickname);
}

TEST(OptionsInput, LibraryFolderTextIsAFullWindowsPathWithNamesWindowsAccepts) {
    const std::string notFull = "The library folder must be a full path, such as C:\\Games.";
    const std::string badCharacter =
        "A folder name in the library path cannot contain any of < > : \" | ? * or control characters.";
    const std::string badEnd = "A folder name in the library path cannot end with a space or a dot.";
    const std::string dots = "The library path cannot contain \".\" or \"..\"; write the folder out in full.";
    const std::string noShare =
        "A network library folder needs a server and a share, such as \\\\server\\games.";
    const auto device = [](const std::string& name) {
        return "\"" + name + "\" is a name Windows keeps for a device; choose another folder name.";
    };
    // What is checked of a good path: the path kept is the text without its surrounding blanks.
    expectCases<bool>(
        {
            {"  E:\\Spiele\\Bibliothek  ", true, ""},
            {"\\\\nas\\games\\corvandell", true, ""},
            {"C:\\Games\\console", true, ""},
            {"", false, "Choose a library folder."},
            {"C:Games", false, notFull},
            {"\\\\nas", false, noShare},
            {"C:\\Games\\x:y", false, badCharacter},
            {"C:\\Games\\More.", false, badEnd},
            {"C:\\Games\\..\\Other", false, dots},
            {"C:\\Games\\nul.txt", false, device("nul.txt")},
        },
        [](std::string_view text) {
            const CheckedInput<std::filesystem::path> checked = checkLibraryFolderText(text);
            return CheckedInput<bool>{pathToUtf8(checked.value) == trimAsciiBlanks(text), checked.error};
        });
}

TEST(OptionsInput, CreatingTheLibraryFolderMakesItsParentsAndExplainsAFileInTheWay) {
    const test::TempFolder temp;
    const std::filesystem::path nested = temp.path() / "a" / "b" / "Games";
    EXPECT_EQ(createLibraryFolder(nested), "");
    EXPECT_TRUE(std::filesystem::is_directory(nested));
    EXPECT_EQ(createLibraryFolder(nested), ""); // already there is fine

    temp.writeFile("blocker", "a file, not a folder");
    for (const std::filesystem::path& blocked :
         {temp.path() / "blocker", temp.path() / "blocker" / "Games"}) {
        const std::string error = createLibraryFolder(blocked);
        const std::string start = "The library folder \"" + pathToUtf8(blocked) + "\" could not be created: ";
        EXPECT_EQ(error.substr(0, start.size()), start) << error;
        EXPECT_GT(error.size(), start.size() + 1) << "the reason is given";
        EXPECT_TRUE(error.ends_with(".")) << error;
    }
}

} // namespace
} // namespace corvandell
