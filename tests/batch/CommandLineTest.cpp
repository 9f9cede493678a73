#include <gtest/gtest.h>

#include "batch/CommandLine.h"

namespace zemo::batch {
namespace {

std::optional<CommandLine> parsed(const std::vector<std::string>& words) {
    std::string complaint;
    auto line = parseCommandLine(words, complaint);
    EXPECT_EQ(line.has_value(), complaint.empty()) << complaint;
    return line;
}

std::string complaintOf(const std::vector<std::string>& words) {
    std::string complaint;
    EXPECT_FALSE(parseCommandLine(words, complaint));
    return complaint;
}

TEST(CommandLine, StepsAreKeptInTheirOrder) {
    const auto line = parsed({"open", "a", "play", "info", "open", "b"});
    ASSERT_TRUE(line);
    ASSERT_EQ(line->steps.size(), 4U);
    EXPECT_EQ(std::get<OpenStep>(line->steps[0]).file, "a");
    EXPECT_TRUE(std::holds_alternative<PlayStep>(line->steps[1]));
    EXPECT_TRUE(std::holds_alternative<InfoStep>(line->steps[2]));
    EXPECT_EQ(std::get<OpenStep>(line->steps[3]).file, "b");
}

TEST(CommandLine, BothBoxesOfAnOpeningAreUncheckedUnlessNamed) {
    const auto line = parsed({"open", "a"});
    ASSERT_TRUE(line);
    EXPECT_FALSE(std::get<OpenStep>(line->steps[0]).swap);
    EXPECT_FALSE(std::get<OpenStep>(line->steps[0]).normalize);
}

TEST(CommandLine, EachBoxOfAnOpeningIsNamedByItself) {
    const auto line =
        parsed({"open", "a", "swap", "open", "b", "normalize", "open", "c", "swap", "normalize"});
    ASSERT_TRUE(line);
    const auto& swapOnly = std::get<OpenStep>(line->steps[0]);
    const auto& normalizeOnly = std::get<OpenStep>(line->steps[1]);
    const auto& both = std::get<OpenStep>(line->steps[2]);
    EXPECT_TRUE(swapOnly.swap && !swapOnly.normalize);
    EXPECT_TRUE(!normalizeOnly.swap && normalizeOnly.normalize);
    EXPECT_TRUE(both.swap && both.normalize);
}

TEST(CommandLine, AFileMayHaveTheNameOfAStep) {
    const auto line = parsed({"open", "play"});
    ASSERT_TRUE(line);
    ASSERT_EQ(line->steps.size(), 1U);
    EXPECT_EQ(std::get<OpenStep>(line->steps[0]).file, "play");
}

TEST(CommandLine, WithoutARateThereIsNone) {
    const auto line = parsed({"info"});
    ASSERT_TRUE(line);
    EXPECT_FALSE(line->rate);
}

TEST(CommandLine, ARateMayHaveAFraction) {
    const auto line = parsed({"--rate", "44100.5", "info"});
    ASSERT_TRUE(line);
    EXPECT_EQ(line->rate, 44100.5);
}

TEST(CommandLine, TheLowestAndHighestRatesAreTaken) {
    EXPECT_EQ(parsed({"--rate", "1", "info"})->rate, 1.0);
    EXPECT_EQ(parsed({"--rate", "1000000", "info"})->rate, 1e6);
}

TEST(CommandLine, ARateThatIsNoneIsRefused) {
    for (const char* rate : {"", "0", "0.99", "1000001", "-48000", "nan", "inf", "1e400", "48k",
                             " 48000", "48000 ", "info"}) {
        EXPECT_NE(complaintOf({"--rate", rate, "info"}).find("--rate"), std::string::npos) << rate;
    }
    EXPECT_NE(complaintOf({"--rate"}).find("--rate"), std::string::npos);
}

TEST(CommandLine, AnUnknownStepIsRefusedByName) {
    EXPECT_NE(complaintOf({"info", "leap"}).find("\"leap\""), std::string::npos);
}

TEST(CommandLine, ARateAfterTheFirstStepIsRefused) {
    EXPECT_NE(complaintOf({"info", "--rate", "48000"}).find("--rate"), std::string::npos);
}

TEST(CommandLine, AnOpeningWithoutAFileIsRefused) {
    EXPECT_NE(complaintOf({"info", "open"}).find("open"), std::string::npos);
}

TEST(CommandLine, NothingToDoIsRefused) {
    EXPECT_FALSE(complaintOf({}).empty());
    EXPECT_FALSE(complaintOf({"--rate", "48000"}).empty());
}

TEST(CommandLine, StepsOfOneWordTakeNoMore) {
    const auto line = parsed({"revert", "play", "info"});
    ASSERT_TRUE(line);
    ASSERT_EQ(line->steps.size(), 3U);
    EXPECT_TRUE(std::holds_alternative<RevertStep>(line->steps[0]));
}

TEST(CommandLine, AFileIsSavedUnderFourExtensions) {
    for (const char* file : {"a.caf", "a.CAF", "a.aif", "a.AIF"}) {
        const auto line = parsed({"save", file});
        ASSERT_TRUE(line);
        EXPECT_EQ(std::get<SaveStep>(line->steps[0]).file, file);
    }
}

TEST(CommandLine, AnyOtherNameToSaveIsRefusedBeforeAnythingRuns) {
    for (const char* file : {"a.aiff", "a.Caf", "a.wav", "a", ".caf"}) {
        EXPECT_NE(complaintOf({"info", "save", file}).find(file), std::string::npos);
    }
}

TEST(CommandLine, AFileIsExportedUnderFourExtensions) {
    for (const char* file : {"a.wav", "a.WAV", "a.flac", "a.FLAC"}) {
        const auto line = parsed({"export", file});
        ASSERT_TRUE(line);
        EXPECT_EQ(std::get<ExportStep>(line->steps[0]).file, file);
    }
}

TEST(CommandLine, AnyOtherNameToExportIsRefusedBeforeAnythingRuns) {
    for (const char* file : {"a.caf", "a.Wav", "a.mp3", "a", ".wav"}) {
        EXPECT_NE(complaintOf({"info", "export", file}).find(file), std::string::npos);
    }
}

TEST(CommandLine, AFileToImportMayHaveAnyName) {
    EXPECT_EQ(std::get<ImportStep>(parsed({"import", "a"})->steps[0]).file, "a");
    EXPECT_FALSE(complaintOf({"import"}).empty());
}

TEST(CommandLine, ADumpMayHaveAnyName) {
    EXPECT_EQ(std::get<DumpStep>(parsed({"dump", "a.wav"})->steps[0]).file, "a.wav");
}

TEST(CommandLine, EveryStepThatWritesNeedsAFile) {
    for (const char* step : {"save", "export", "dump", "render"}) {
        EXPECT_NE(complaintOf({step}).find(step), std::string::npos);
    }
}

TEST(CommandLine, ARenderHas512FramesACallAndThePeakUnlessToldOtherwise) {
    const auto line = parsed({"render", "a"});
    ASSERT_TRUE(line);
    const auto& render = std::get<RenderStep>(line->steps[0]);
    EXPECT_EQ(render.frames, 512U);
    EXPECT_FALSE(render.rms);
    EXPECT_TRUE(render.levels.empty());
}

TEST(CommandLine, TheSettingsOfARenderComeInAnyOrder) {
    for (const auto& words : std::vector<std::vector<std::string>>{
             {"render", "a", "frames=7", "rms=on", "levels=b", "info"},
             {"render", "a", "levels=b", "rms=on", "frames=7", "info"}}) {
        const auto line = parsed(words);
        ASSERT_TRUE(line);
        ASSERT_EQ(line->steps.size(), 2U);
        const auto& render = std::get<RenderStep>(line->steps[0]);
        EXPECT_EQ(render.frames, 7U);
        EXPECT_TRUE(render.rms);
        EXPECT_EQ(render.levels, "b");
    }
}

TEST(CommandLine, ARenderOfNoOrTooManyFramesIsRefused) {
    for (const char* frames :
         {"frames=0", "frames=-1", "frames=1048577", "frames=1.5", "frames="}) {
        EXPECT_NE(complaintOf({"render", "a", frames}).find("frames"), std::string::npos) << frames;
    }
    EXPECT_EQ(std::get<RenderStep>(parsed({"render", "a", "frames=1048576"})->steps[0]).frames,
              1048576U);
}

TEST(CommandLine, EveryModulationHasItsCarrierAndIndex) {
    const std::vector<std::pair<const char*, AmStep::Kind>> names{
        {"am", AmStep::Kind::Am},
        {"ssb-lower", AmStep::Kind::SsbLower},
        {"ssb-upper", AmStep::Kind::SsbUpper}};
    for (const auto& [name, kind] : names) {
        const auto line = parsed({name, "440.5", "0"});
        ASSERT_TRUE(line);
        const auto& step = std::get<AmStep>(line->steps[0]);
        EXPECT_EQ(step.kind, kind);
        EXPECT_EQ(step.frequency, 440.5F);
        EXPECT_EQ(step.index, 0.0F);
    }
}

TEST(CommandLine, WhatASheetWouldRefuseWithoutAWordIsRefused) {
    for (const char* frequency : {"0", "-1", "nan", "x"}) {
        EXPECT_NE(complaintOf({"am", frequency, "1"}).find("am: the frequency"), std::string::npos);
    }
    for (const char* index : {"-0.5", "nan", "x"}) {
        EXPECT_NE(complaintOf({"fm", "1", index, "8"}).find("fm: the index"), std::string::npos);
    }
}

TEST(CommandLine, WhatASheetWouldClampIsClampedAndReported) {
    const std::vector<std::pair<const char*, float>> rates{
        {"3.9", 4.0F}, {"32.1", 32.0F}, {"-5", 4.0F}, {"nan", 4.0F}};
    for (const auto& [said, used] : rates) {
        const auto line = parsed({"fm", "100", "1", said});
        ASSERT_TRUE(line);
        EXPECT_EQ(std::get<FmStep>(line->steps[0]).envelopeRate, used) << said;
        EXPECT_EQ(line->notices.size(), 1U) << said;
    }
}

TEST(CommandLine, WhatIsInsideItsRangeIsNotReported) {
    for (const char* rate : {"4", "8.5", "32"}) {
        EXPECT_TRUE(parsed({"fm", "100", "1", rate})->notices.empty()) << rate;
    }
}

TEST(CommandLine, TheSettingsOfHdAreTakenByName) {
    const auto line = parsed({"hd", "mix=0.25", "harmonics=2,4", "highpass=1000", "attack=200",
                              "scale=off", "slope=0.7", "knee=0.1", "comp=0.9", "info"});
    ASSERT_TRUE(line);
    ASSERT_EQ(line->steps.size(), 2U);
    const HdSettings& settings = std::get<HdStep>(line->steps[0]).settings;
    EXPECT_TRUE(settings.two && settings.four);
    EXPECT_EQ(settings.hpSelect, 2);
    EXPECT_EQ(settings.attack, 200);
    EXPECT_FALSE(settings.scale);
    EXPECT_EQ(settings.slope, 0.7);
    EXPECT_EQ(settings.mix, 0.25F);
    EXPECT_EQ(settings.knee, 0.1F);
    EXPECT_EQ(settings.comp, 0.9F);
    EXPECT_TRUE(line->notices.empty());
}

TEST(CommandLine, ASettingOfHdThatIsNoneIsRefused) {
    for (const char* word : {"harmonics=3", "highpass=700", "scale=maybe", "mix=loud", "level=1"}) {
        EXPECT_FALSE(complaintOf({"hd", word}).empty()) << word;
    }
}

TEST(CommandLine, HelpAndVersionNeedNoSteps) {
    EXPECT_TRUE(parsed({"--help"})->help);
    EXPECT_TRUE(parsed({"--version"})->version);
}

TEST(CommandLine, HelpAndVersionStandAlone) {
    for (const char* word : {"--help", "--version"}) {
        EXPECT_FALSE(complaintOf({word, "info"}).empty());
    }
    EXPECT_FALSE(complaintOf({"--help", "--version"}).empty());
}

TEST(CommandLine, TheUsageNamesEveryStep) {
    for (const char* step : {"open FILE", "resample", "am FREQ", "ssb-lower", "ssb-upper",
                             "fm FREQ", "hd [", "revert", "save FILE", "dump FILE", "render FILE",
                             "play", "info", "--rate", "--help", "--version"}) {
        EXPECT_NE(usage().find(step), std::string::npos) << step;
    }
}

} // namespace
} // namespace zemo::batch
