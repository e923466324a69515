#include <gmock/gmock.h>

#include <cairo.h>
#include <sndfile.h>

#include <algorithm>
#include <memory>

#include "tests/cli/program.hpp"
#include "tests/support/sound_files.hpp"

namespace vanta::test {
namespace {

/// A PNG, read by another library than it was written for.
class Picture {
public:
    explicit Picture(const std::filesystem::path& file)
        : surface_(cairo_image_surface_create_from_png(file.c_str()), cairo_surface_destroy) {}

    int width() const { return cairo_image_surface_get_width(surface_.get()); }
    int height() const { return cairo_image_surface_get_height(surface_.get()); }
    /// Whether a column between two rows is red somewhere, as the curve of the gain reduction is.
    bool isRed(int x, int top, int bottom) const {
        for (int y = top; y < bottom; ++y) {
            const unsigned char* pixel = cairo_image_surface_get_data(surface_.get()) +
                                         y * cairo_image_surface_get_stride(surface_.get()) + 4 * x;
            if (pixel[2] > pixel[0] + 30) return true;  // blue, green, red
        }
        return false;
    }

private:
    std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface_;
};

const std::string kSmall = "--size 800x480 ";

/// Two seconds of silence, then two of a loud tone.
class CommandPlot : public testing::Test {
protected:
    CommandPlot() {
        Signal tone = sine(440, 48000, 4 * 48000, 0.9);
        std::fill_n(tone.begin(), 2 * 48000, 0.0f);
        writeSound(folder / "in.wav", {tone, tone}, SF_FORMAT_WAV | SF_FORMAT_PCM_16, 48000);
    }
    ProgramRun plot(const std::string& options) {
        return runProgram(folder.path, words("plot in.wav --gain 12 " + options));
    }
    TempFolder folder;
};

TEST_F(CommandPlot, ShowsWhereTheLimiterTurnsDown) {
    const ProgramRun run = plot(kSmall + "-o whole.png --quiet");
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(run.out + run.err, "");
    const Picture whole(folder / "whole.png");
    EXPECT_EQ(whole.width(), 800);
    EXPECT_EQ(whole.height(), 480);
    // 120 columns a second; from well below 0 dB on.
    EXPECT_FALSE(whole.isRed(120, 100, 150));
    EXPECT_TRUE(whole.isRed(360, 100, 150));
    EXPECT_FALSE(whole.isRed(600, 100, 150)) << "the file is over";

    ASSERT_EQ(plot(kSmall + "-o again.png").code, 0);
    EXPECT_EQ(readBytes(folder / "again.png"), readBytes(folder / "whole.png")) << "each time the same";
    ASSERT_EQ(plot(kSmall + "-o early.png --at 1.5").code, 0);
    EXPECT_FALSE(Picture(folder / "early.png").isRed(360, 100, 150));
    ASSERT_EQ(plot(kSmall + "-o fast.png --mode fast --scale 2 --meter-scale loudness").code, 0);
    const Picture fast(folder / "fast.png");
    EXPECT_EQ(fast.width(), 1600);
    EXPECT_TRUE(fast.isRed(900, 150, 250)) << "the newest is at the right";
    ASSERT_EQ(plot(kSmall + "-o off.png --mode off").code, 0);
    EXPECT_FALSE(Picture(folder / "off.png").isRed(360, 100, 150));
}

TEST_F(CommandPlot, SaysWhatWouldBeRightAndKeepsWhatIsThere) {
    writeBytes(folder / "kept.png", "mine");
    const std::pair<const char*, std::pair<int, const char*>> cases[] = {
        {"", {2, "use -o PICTURE.png"}},
        {"-o a.png --mode fats", {2, "unknown mode 'fats' (did you mean fast?): use slow-down, fast"}},
        {"-o a.png --meter-scale 20", {2, "unknown meter scale '20'"}},
        {"-o a.png --scale 3", {2, "--scale cannot be '3': use 1, 1.5 or 2"}},
        {"-o a.png --size 80", {2, "--size cannot be '80'"}},
        {"-o a.png other.wav", {2, "plot needs one file"}},
        {"-o in.wav --force", {1, "same file"}},
        {"-o kept.png", {1, "use --force to replace it"}},
        {"-o nowhere/a.png", {1, "folder does not exist"}}};
    for (const auto& [options, expected] : cases) {
        const ProgramRun run = plot(options);
        EXPECT_EQ(run.code, expected.first) << options;
        EXPECT_THAT(run.err, testing::HasSubstr(expected.second)) << options;
        EXPECT_EQ(std::ranges::count(run.err, '\n'), 1) << run.err;
    }
    EXPECT_EQ(readBytes(folder / "kept.png"), "mine");
    EXPECT_THAT(folder.names(), testing::UnorderedElementsAre("in.wav", "kept.png"));
}

}  // namespace
}  // namespace vanta::test
