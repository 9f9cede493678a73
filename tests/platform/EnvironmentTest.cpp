#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "platform/OwnEnvironment.h"
#include "platform/Utf8.h"
#include "platform_linux/StreamProperties.h"

namespace zemo::platform {
namespace {

std::string here(const char* name) {
    const char* const text = std::getenv(name); // NOLINT(concurrency-mt-unsafe)
    return text != nullptr ? text : "(none)";
}

/// Whether a program that is started has the variable with that value.
bool isPassedOn(const std::string& name, const std::string& value) {
    const std::string command = "test \"$(printenv " + name + ")\" = \"" + value + "\"";
    return std::system(command.c_str()) == 0; // NOLINT(concurrency-mt-unsafe)
}

TEST(OwnVariables, AreSetForThisProcessUnlessTheyAreAlready) {
    ::setenv("ZEMO_TEST_TAKEN", "theirs", 1); // NOLINT(concurrency-mt-unsafe)
    setOwnVariable("ZEMO_TEST_TAKEN", "ours");
    setOwnVariable("ZEMO_TEST_FREE", "a b = c");
    EXPECT_EQ(here("ZEMO_TEST_TAKEN"), "theirs");
    EXPECT_EQ(here("ZEMO_TEST_FREE"), "a b = c");
}

TEST(OwnVariables, AreNotPassedOnWhereTheyShallNotBe) {
    ::setenv("ZEMO_TEST_THEIRS", "theirs", 1); // NOLINT(concurrency-mt-unsafe)
    setOwnVariable("ZEMO_TEST_OURS", "ours");
    EXPECT_TRUE(isPassedOn("ZEMO_TEST_OURS", "ours"));
    {
        const WithoutOwnVariables without;
        EXPECT_FALSE(isPassedOn("ZEMO_TEST_OURS", "ours"));
        EXPECT_TRUE(isPassedOn("ZEMO_TEST_THEIRS", "theirs"));
    }
    EXPECT_TRUE(isPassedOn("ZEMO_TEST_OURS", "ours"));
    EXPECT_EQ(here("ZEMO_TEST_OURS"), "ours");
}

TEST(StreamProperties, AreWhatDesktopsShowAndSortBy) {
    setStreamProperties("1.2.3");
    EXPECT_EQ(here("PULSE_PROP_media.role"), "production");
    EXPECT_EQ(here("PULSE_PROP_application.id"), "zemo");
    EXPECT_EQ(here("PULSE_PROP_application.icon_name"), "zemo");
    EXPECT_EQ(here("PULSE_PROP_application.version"), "1.2.3");
}

TEST(Utf8, IsWhatTheStandardSays) {
    for (const char* const text :
         {"", "bell.caf", "Glöckchen.caf", "鐘.caf", "🔔", "\x7F", "\xC2\x80", "\xDF\xBF",
          "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80", "\xEF\xBF\xBF", "\xF0\x90\x80\x80",
          "\xF4\x8F\xBF\xBF"}) {
        EXPECT_TRUE(isUtf8(text)) << text;
    }
    EXPECT_TRUE(isUtf8(std::string_view("\0", 1)));
}

TEST(Utf8, IsNothingElse) {
    for (const char* const text :
         {"\x80", "a\xBF", "\xC0\x80", "\xC1\xBF", "\xC2", "\xC2z", "\xC3\xC3", "\xE0\x9F\xBF",
          "\xE2\x82", "\xE2\x82z", "\xED\xA0\x80", "\xEF\xBFz", "\xF0\x8F\xBF\xBF", "\xF0\x90\x80",
          "\xF1\x80\x80z", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF"}) {
        EXPECT_FALSE(isUtf8(text)) << text;
    }
}

} // namespace
} // namespace zemo::platform
