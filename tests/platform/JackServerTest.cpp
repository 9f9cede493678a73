#include "platform_linux/JackServer.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace zemo::platform {
namespace {

constexpr const char* kJack = "1.9.21";

class JackSockets : public testing::Test {
protected:
    JackSockets() {
        std::string folder = testing::TempDir() + "zemo-jack-XXXXXX";
        EXPECT_NE(::mkdtemp(folder.data()), nullptr);
        places_ = {.memory = folder, .server = "studio", .user = "1000"};
    }
    ~JackSockets() override { std::filesystem::remove_all(places_.memory); }

    void leave(const std::string& name) {
        const std::filesystem::path path = places_.memory + "/" + name;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path) << "x";
    }

    JackPlaces places_;
};

TEST_F(JackSockets, OneThatIsListenedAtTellsOfALivingServerAndWhich) {
    places_.sockets = places_.memory + "/sockets";
    const auto serverAmong = [this](const std::string& lines) {
        std::ofstream(places_.sockets) << "Num RefCount Protocol Flags Type St Inode Path\n"
                                       << lines;
        return jackServerSocket(places_);
    };
    const std::string path = places_.memory + "/jack_";
    const std::string listening = "00000000a4: 00000002 00000000 00010000 0001 01 640865 ";
    const std::string connected = "00000000a8: 00000003 00000000 00000000 0001 03 640867 ";
    EXPECT_EQ(serverAmong(listening + path + "studio_1000_0\n"), 640865U);
    EXPECT_EQ(serverAmong(listening + path + "studio_0\n"), 640865U);
    EXPECT_EQ(serverAmong(connected + path + "studio_0\n" + listening + path + "studio_0\n"),
              640865U);
    EXPECT_EQ(serverAmong(connected + path + "studio_0\n"), 0U);
    EXPECT_EQ(serverAmong(listening + path + "studio_1001_0\n"), 0U);
    EXPECT_EQ(serverAmong(listening + path + "studios_1000_0\n"), 0U);
    EXPECT_EQ(serverAmong(listening + "@" + path + "studio_0\n"), 0U);
    EXPECT_EQ(serverAmong("\nnonsense\n" + listening + "\n"), 0U);
    places_.sockets += "-not-there";
    EXPECT_EQ(jackServerSocket(places_), 0U);
}

TEST_F(JackSockets, WithoutOneThereIsNoServer) {
    EXPECT_FALSE(mayHaveJackServer(places_, kJack));
    places_.memory += "/not-there";
    EXPECT_FALSE(mayHaveJackServer(places_, kJack));
}

TEST_F(JackSockets, OneOfTheUserTellsOfAServer) {
    leave("jack_studio_1000_0");
    EXPECT_TRUE(mayHaveJackServer(places_, kJack));
}

TEST_F(JackSockets, OneOfAllUsersTellsOfAServer) {
    leave("jack_studio_0");
    EXPECT_TRUE(mayHaveJackServer(places_, kJack));
}

TEST_F(JackSockets, OneOfTheFirstVersionTellsOfAServer) {
    leave("jack-1000/studio/jack_0");
    EXPECT_TRUE(mayHaveJackServer(places_, "0.126.0"));
}

TEST_F(JackSockets, OthersTellNothing) {
    leave("jack_default_1000_0");
    leave("jack_studio_1001_0");
    leave("jack-shm-registry");
    EXPECT_FALSE(mayHaveJackServer(places_, kJack));
}

TEST_F(JackSockets, ALibraryThatIsNotJacksOwnIsAskedItself) {
    EXPECT_TRUE(mayHaveJackServer(places_, "3.0.0.0 (using PipeWire 0.3.65)"));
}

TEST_F(JackSockets, TheServersNameComesFromTheEnvironment) {
    ::setenv("JACK_DEFAULT_SERVER", "stage", 1);
    EXPECT_EQ(JackPlaces::ofThisProcess().server, "stage");
    ::unsetenv("JACK_DEFAULT_SERVER");
    EXPECT_EQ(JackPlaces::ofThisProcess().server, "default");
    EXPECT_EQ(JackPlaces::ofThisProcess().user, std::to_string(::getuid()));
}

} // namespace
} // namespace zemo::platform
