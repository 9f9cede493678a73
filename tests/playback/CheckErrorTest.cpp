#include "playback/CheckError.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "support/FakePlatform.h"

namespace zemo::test {
namespace {

using platform::fourCharCode;
using platform::Status;

Status code(const char (&text)[5]) {
    return static_cast<Status>(fourCharCode(text));
}

/// Writes what the ending process reports to standard error, each report between brackets.
class EchoReports final : public platform::TraceLog, public platform::Alert {
public:
    void print(std::string_view text) override { echo("OUT", text); }
    void printError(std::string_view text) override { echo("ERR", text); }
    void log(std::string_view text) override { echo("LOG", text); }
    void runCritical(const std::string& title, const std::string& message,
                     const std::string& button) override {
        echo("ALERT", title + "|" + message + "|" + button);
    }

private:
    static void echo(const char* what, std::string_view text) {
        std::fprintf(stderr, "%s<%.*s>", what, static_cast<int>(text.size()), text.data());
    }
};

class CheckErrorEnd : public testing::Test {
protected:
    CheckErrorEnd() {
        platform::services().trace = &reports_;
        platform::services().alert = &reports_;
    }

    FakePlatform platform_;
    EchoReports reports_;
};

TEST(StatusText, FourPrintableCharactersStandInQuotes) {
    EXPECT_EQ(statusText(code("fmt?")), "'fmt?'");
    EXPECT_EQ(statusText(code("abcd")), "'abcd'");
    EXPECT_EQ(statusText(code("    ")), "'    '");
    EXPECT_EQ(statusText(code("~~~~")), "'~~~~'");
    EXPECT_EQ(statusText(code("%d%n")), "'%d%n'");
}

TEST(StatusText, AnythingElseIsASignedDecimal) {
    EXPECT_EQ(statusText(-50), "-50");
    EXPECT_EQ(statusText(1), "1");
    EXPECT_EQ(statusText(INT32_MIN), "-2147483648");
    EXPECT_EQ(statusText(INT32_MAX), "2147483647");
}

TEST(StatusText, OneUnprintableByteAnywhereMakesItADecimal) {
    for (int place = 0; place < 4; ++place) {
        for (const std::uint32_t byte : {0x00U, 0x1FU, 0x7FU, 0x80U, 0xFFU}) {
            const int shift = 8 * place;
            const std::uint32_t bits = (fourCharCode("abcd") & ~(0xFFU << shift)) | (byte << shift);
            const auto status = static_cast<Status>(bits);
            EXPECT_EQ(statusText(status), std::to_string(status));
        }
    }
}

TEST(FormattedWithoutArguments, ADoublePercentSignBecomesOne) {
    EXPECT_EQ(formattedWithoutArguments("a%%b"), "a%b");
    EXPECT_EQ(formattedWithoutArguments("%%%%"), "%%");
    EXPECT_EQ(formattedWithoutArguments("%%%"), "%%");
}

TEST(FormattedWithoutArguments, EveryOtherCharacterStays) {
    EXPECT_EQ(formattedWithoutArguments("100% of %d %s\n"), "100% of %d %s\n");
    EXPECT_EQ(formattedWithoutArguments("%"), "%");
    EXPECT_EQ(formattedWithoutArguments(""), "");
}

TEST(CheckErrorReturn, StatusZeroReportsNothing) {
    FakePlatform platform;
    CheckError(0, "Couldn't do it");
    EXPECT_TRUE(platform.trace.all.empty());
    EXPECT_TRUE(platform.alert.shown.empty());
}

TEST_F(CheckErrorEnd, ReportsOnStandardErrorOnStandardOutputAndInAnAlertInThisOrder) {
    EXPECT_EXIT(CheckError(-50, "Couldn't do it"), testing::ExitedWithCode(1),
                "^ERR<Error: Couldn't do it \\(-50\\)\n>"
                "OUT<Couldn't do it \\(-50\\)\nApplication will quit\n>"
                "ALERT<ZEMO: Error:\\|Couldn't do it \\(-50\\)\nApplication will quit\\|OK>$");
}

TEST_F(CheckErrorEnd, ACodeOfFourCharactersIsQuotedInEveryReport) {
    EXPECT_EXIT(CheckError(code("!dev"), "Op"), testing::ExitedWithCode(1),
                "^ERR<Error: Op \\('!dev'\\)\n>OUT<Op \\('!dev'\\)\nApplication will quit\n>"
                "ALERT<ZEMO: Error:\\|Op \\('!dev'\\)\nApplication will quit\\|OK>$");
}

TEST_F(CheckErrorEnd, OnlyTheAlertTakesItsTextAsAFormat) {
    EXPECT_EXIT(CheckError(code("a%%b"), "Op"), testing::ExitedWithCode(1),
                "^ERR<Error: Op \\('a%%b'\\)\n>OUT<Op \\('a%%b'\\)\nApplication will quit\n>"
                "ALERT<ZEMO: Error:\\|Op \\('a%b'\\)\nApplication will quit\\|OK>$");
}

TEST_F(CheckErrorEnd, TheMessageIsCutAt264CharactersAndTheErrorLineIsNot) {
    const std::string operation(300, 'x');
    EXPECT_EXIT(CheckError(-50, operation.c_str()), testing::ExitedWithCode(1),
                "^ERR<Error: " + operation + " \\(-50\\)\n>OUT<" + operation.substr(0, 264) +
                    "\n>ALERT<ZEMO: Error:\\|" + operation.substr(0, 264) + "\\|OK>$");
}

TEST_F(CheckErrorEnd, AMessageOf264CharactersIsWhole) {
    const std::string rest = " (-50)\nApplication will quit";
    const std::string operation(264 - rest.size(), 'x');
    EXPECT_EXIT(CheckError(-50, operation.c_str()), testing::ExitedWithCode(1),
                "OUT<" + operation + " \\(-50\\)\nApplication will quit\n>");
}

TEST_F(CheckErrorEnd, AMessageOf265CharactersLosesItsLast) {
    const std::string rest = " (-50)\nApplication will quit";
    const std::string operation(265 - rest.size(), 'x');
    EXPECT_EXIT(CheckError(-50, operation.c_str()), testing::ExitedWithCode(1),
                "OUT<" + operation + " \\(-50\\)\nApplication will qui\n>");
}

} // namespace
} // namespace zemo::test
