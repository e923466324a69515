#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>

#include <functional>

#include "tests/cli/program.hpp"
#include "tests/plugin/user_home.hpp"
#include "tests/support/sound_files.hpp"

namespace vanta::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr int kRate = 48000;

class CommandAax : public testing::Test {
protected:
    ProgramRun run(const std::string& command) const { return runProgram(folder.path, words(command)); }
    ProgramRun aaxRender(const std::string& arguments) const {
        return run("aax-render " VANTA_AAX_MODULE " " + arguments);
    }
    void write(const std::string& name, std::size_t channels, std::size_t length) const {
        Channels made;
        for (std::size_t c = 0; c < channels; ++c) {
            made.push_back(pinkNoise(c + 1, length, 0.1));
            const Signal beats =
                bursts(200.0 + 50.0 * static_cast<double>(c), kRate, length, 1500, 3000, 0.6);
            std::ranges::transform(made.back(), beats, made.back().begin(), std::plus<float>());
        }
        writeSound(folder / name, made, SF_FORMAT_WAV | SF_FORMAT_FLOAT, kRate);
    }

    UserHome folder;
};

TEST_F(CommandAax, RendersAsRenderDoesBothWays) {
    write("stereo.wav", 2, 20000);
    write("six.wav", 6, 9000);
    const std::string settings = " --gain 9 --style Aggressive --output-level -1 --oversampling 2x --quiet";
    for (const std::string name : {"stereo.wav", "six.wav --tail 0.05 --layout 6.0"}) {
        const std::string input = name.substr(0, name.find(' '));
        const std::string more = name.substr(input.size());
        ASSERT_EQ(run("render " + input + " expected.wav --force" + more + settings).code, 0);
        for (const std::string way : {"", " --offline", " --block 37"}) {
            const ProgramRun done = aaxRender(input + " out.wav --force" + more + settings + way);
            ASSERT_EQ(done.code, 0) << done.err;
            EXPECT_EQ(done.out, "");
            const Sound found = readSound(folder / "out.wav");
            const Sound expected = readSound(folder / "expected.wav");
            ASSERT_EQ(found.channels.size(), expected.channels.size());
            for (std::size_t c = 0; c < expected.channels.size(); ++c)
                EXPECT_LT(nullDb(found.channels[c], expected.channels[c]), -140.0) << name << way;
        }
    }
    const ProgramRun told = aaxRender("stereo.wav told.wav --gain 9");
    EXPECT_THAT(told.out, StartsWith("stereo.wav -> told.wav (wav float): by the render calls of "));
    EXPECT_THAT(told.out, HasSubstr("latency "));
}

TEST_F(CommandAax, AMonoFileIsTheSideChain) {
    write("in.wav", 2, 9000);
    write("key.wav", 1, 9000);
    ASSERT_EQ(run("render in.wav expected.wav --gain 12 --side-chain key.wav --quiet").code, 0);
    ASSERT_EQ(aaxRender("in.wav out.wav --gain 12 --side-chain key.wav --quiet").code, 0);
    // The command keys the first channel alone, the module's host all of them.
    EXPECT_LT(
        nullDb(readSound(folder / "out.wav").channels[0], readSound(folder / "expected.wav").channels[0]),
        -140.0);
}

TEST_F(CommandAax, SaysWhatIsWrong) {
    write("in.wav", 2, 500);
    write("out.wav", 2, 500);
    writeBytes(folder / "text.so", "this is no module");
    const std::string module = VANTA_AAX_MODULE " ";
    const std::tuple<std::string, int, std::string> cases[] = {
        {"aax-scan", 2, "module is required"},
        {"aax-scan gone.so", 1, "gone.so: cannot be loaded"},
        {"aax-scan text.so", 1, "text.so: cannot be loaded"},
        {"aax-scan " VANTA_OTHER_MODULE, 1, "is not an AAX module: it does not export ACF"},
        {"aax-render " + module + "in.wav", 2, "output is required"},
        {"aax-render " + module + "in.wav out.wav", 1, "out.wav"},
        {"aax-render " + module + "gone.wav new.wav", 1, "gone.wav"},
        {"aax-render " + module + "in.wav new.wav --side-chain in.wav", 1, "use a mono file"},
        {"aax-render " + module + "in.wav new.wav --side-chain in.wav --offline", 2, "cannot be combined"},
        {"aax-render " + module + "in.wav new.wav --gian 3", 2, "did you mean --gain?"},
    };
    for (const auto& [command, code, text] : cases) {
        const ProgramRun done = run(command);
        EXPECT_EQ(done.code, code) << command;
        EXPECT_THAT(done.err, HasSubstr(text)) << command;
        EXPECT_THAT(done.err, StartsWith("vanta: ")) << command;
        EXPECT_EQ(done.out, "") << command;
        EXPECT_FALSE(std::filesystem::exists(folder / "new.wav")) << command;
    }
}

}  // namespace
}  // namespace vanta::test
