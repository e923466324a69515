#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <jack/jack.h>

#include <csignal>

#include "tests/host/jack/dummy_server.hpp"

namespace vanta::test {
namespace {

using testing::HasSubstr;
using Names = std::vector<std::string>;

class JackProgram : public testing::Test {
protected:
    void SetUp() override { server_.emplace(); }

    std::string file(const std::string& name) const { return (server_->home / name).string(); }

    /// The program, once it says that it runs or has ended.
    ChildProcess& start(Names arguments) {
        arguments.insert(arguments.begin(), VANTA_JACK);
        program_.emplace(arguments, file("printed"));
        EXPECT_TRUE(within(std::chrono::seconds(20), [this] {
            return !program_->isRunning() || program_->printed().find(" -> ") != std::string::npos;
        }));
        return *program_;
    }
    void expectError(const Names& arguments, int code, const std::string& text) {
        ChildProcess& program = start(arguments);
        EXPECT_EQ(program.wait(), code) << text;
        EXPECT_THAT(program.printed(), testing::AllOf(testing::StartsWith("vanta-jack: "), HasSubstr(text)));
    }
    Names connectionsOf(const std::string& port) const {
        const JackConnection jack = openJack({.clientName = "observer"});
        const char** const found =
            jack_port_get_all_connections(jack.get(), jack_port_by_name(jack.get(), port.c_str()));
        Names names;
        for (const char** name = found; name && *name; ++name) names.emplace_back(*name);
        jack_free(found);
        return names;
    }

    std::optional<DummyServer> server_;
    std::optional<ChildProcess> program_;
};

TEST_F(JackProgram, SaysThatAWindowNeedsADisplay) {
    ::setenv("DISPLAY", ":4711", 1);
    expectError({"--gui"}, 1, "--gui needs a display: cannot open display :4711. Set DISPLAY");
}

TEST_F(JackProgram, ConnectsAndKeepsItsSession) {
    const std::string session = file("master.state");
    ChildProcess& first =
        start({"--session", session, "--preset", "Punchy", "--gain", "7.25", "--connect", "system"});
    EXPECT_THAT(first.printed(), HasSubstr("vanta: stereo at 48000 Hz, latency "));
    EXPECT_THAT(connectionsOf("vanta:in_R"), testing::ElementsAre("system:capture_2"));
    EXPECT_THAT(connectionsOf("vanta:out_L"), testing::ElementsAre("system:playback_1"));
    first.signal(SIGUSR1);
    EXPECT_TRUE(
        within(std::chrono::seconds(20), [&] { return first.printed().find("saved") != std::string::npos; }));
    const std::string saved = readBytes(session);
    EXPECT_THAT(saved, HasSubstr("Punchy"));
    std::filesystem::remove(session);
    first.signal(SIGTERM);
    EXPECT_EQ(first.wait(), 0);
    EXPECT_EQ(readBytes(session), saved);

    start({"--session", session, "--side-chain", "--connect-in", "system:capture_2, system:capture_1",
           "--connect-side-chain", "system:capture_1", "--name", "other"});
    EXPECT_THAT(connectionsOf("other:in_L"), testing::ElementsAre("system:capture_2"));
    EXPECT_THAT(connectionsOf("other:side_L"), testing::ElementsAre("system:capture_1"));
    program_->signal(SIGINT);
    EXPECT_EQ(program_->wait(), 0);
    EXPECT_EQ(readBytes(session), saved);
}

TEST_F(JackProgram, SavesWhenTheServerEndsUnderIt) {
    ChildProcess& program = start({"--save", file("kept.state"), "--gain", "3"});
    server_->stop();
    EXPECT_EQ(program.wait(), 1);
    EXPECT_THAT(program.printed(), HasSubstr("vanta-jack: the JACK server has gone"));
    EXPECT_TRUE(std::filesystem::exists(file("kept.state")));
    // Now there is none.
    expectError({}, 1, "no JACK server runs: start one");
    EXPECT_THAT(program_->printed(), HasSubstr("pw-jack vanta-jack"));
}

TEST_F(JackProgram, SaysWhatIsWrongAndWhatWouldBeRight) {
    writeBytes(file("foreign"), "Vn2p and so on");
    expectError({"--session", file("foreign")}, 1, "is not a state of this limiter");
    EXPECT_EQ(readBytes(file("foreign")), "Vn2p and so on");
    expectError({"--save", file("no/such/folder")}, 1, "no/such");
    expectError({"--connect", "systm"}, 1, "'systm' (did you mean system?)");
    expectError({"--connect-midi", "keyboard"}, 1, "no other client has ports");
    expectError({"--layout", "5.2"}, 2, "use mono, stereo,");
    expectError({"--preset", "Punchi"}, 2, "did you mean Punchy?");
    expectError({"--set", "Gian=3"}, 2, "did you mean Gain?");
    expectError({"--conect", "system"}, 2, "did you mean --connect?");
    expectError({"--connect-side-chain", "system"}, 2, "needs --side-chain");
}

}  // namespace
}  // namespace vanta::test
