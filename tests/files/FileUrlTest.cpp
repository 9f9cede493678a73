#include <gtest/gtest.h>

#include "files/FileUrl.h"

namespace zemo::test {
namespace {

std::string extensionOf(const std::string& path) {
    return FileUrl(path).pathExtension();
}

TEST(FileUrl, ThePathIsKeptByteForByte) {
    EXPECT_EQ(FileUrl("/a b/%20\xFF").path(), "/a b/%20\xFF");
}

TEST(FileUrl, ThePathsOwnCharactersStayAsTheyAre) {
    const std::string path = "/azAZ09-._~!$&'()*+,;=:@/x";
    EXPECT_EQ(FileUrl(path).absoluteString(), "file://" + path);
}

TEST(FileUrl, EveryOtherByteIsEscapedInUpperCase) {
    EXPECT_EQ(FileUrl("/ %?#[]\"\n\x7F\xC3\xA9").absoluteString(),
              "file:///%20%25%3F%23%5B%5D%22%0A%7F%C3%A9");
}

TEST(FileUrl, TheLastComponentFollowsTheLastSlash) {
    EXPECT_EQ(FileUrl("/a/b c.caf").lastPathComponent(), "b%20c.caf");
    EXPECT_EQ(FileUrl("/b.caf").lastPathComponent(), "b.caf");
}

TEST(FileUrl, TheExtensionFollowsTheLastDotOfTheName) {
    EXPECT_EQ(extensionOf("/a.b/c.caf"), "caf");
    EXPECT_EQ(extensionOf("/a.b.CAF"), "CAF");
}

TEST(FileUrl, ANameWithoutADotHasNoExtension) {
    EXPECT_EQ(extensionOf("/a.caf/sound"), "");
    EXPECT_EQ(extensionOf("/caf"), "");
}

TEST(FileUrl, ADotThatBeginsOrEndsTheNameMakesNoExtension) {
    EXPECT_EQ(extensionOf("/a/.caf"), "");
    EXPECT_EQ(extensionOf("/a/sound."), "");
}

} // namespace
} // namespace zemo::test
