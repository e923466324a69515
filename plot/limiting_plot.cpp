#include "plot/limiting_plot.hpp"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "gui/offscreen/offscreen_interface.hpp"
#include "gui/offscreen/png_writer.hpp"
#include "host/offline/offline_host.hpp"
#include "interface/page/limiter_page.hpp"

namespace vanta {
namespace {

/// Short enough for each frame of the display to find something new.
constexpr int kBlock = 256;
/// Sixty a second, in the whole milliseconds that the display's clock knows.
constexpr std::array<int, 3> kFrameMs{17, 17, 16};
/// What the display keeps waiting, for frames and audio that come unevenly.
constexpr double kSecondsBehind = 0.05;

/// Milliseconds of the stream that is being drawn. An interface takes its clock as a plain function.
thread_local std::int64_t streamTime = 0;
std::int64_t readStreamTime() {
    return streamTime;
}

/// One run through a limiter, and the interface over it.
class Plotter {
public:
    explicit Plotter(const LimitingPlot& plot)
        : plot_(plot),
          host_(plot.settings, plot.layout, static_cast<float>(plot.sampleRate), kBlock,
                plot.sideChain ? plot.sideChain->channelCount() : 0),
          levels_(interface::levelCounts(plot.layout)),
          link_(plot.settings, levels_, plot.layout),
          ui_(plot.width, plot.height, &readStreamTime) {
        streamTime = 0;
        ui_.deviceBacking().setScale(plot.scale);
        ui_.make<interface::LimiterPage>(link_, static_cast<float>(plot.sampleRate));
        host_.readLevels(levels_);
    }

    void run() {
        while (played_ < endOfPlay()) {
            playBlock();
            if (plot_.progress && !plot_.progress(read_)) throw Stopped();
        }
    }
    void write(const std::filesystem::path& file) { gui::writePng(*ui_.picture(), file.string()); }

private:
    /// What is to be seen last is still on its way through limiter and display for a while, in which the
    /// stream goes on, or silence.
    std::int64_t endOfPlay() const {
        const std::int64_t end = inputEnded_ ? std::min(read_, plot_.endSamples) : plot_.endSamples;
        const auto behind = static_cast<std::int64_t>(kSecondsBehind * plot_.sampleRate) + host_.latency();
        return std::min(end, std::numeric_limits<std::int64_t>::max() - behind) + behind;
    }

    void playBlock() {
        read_ += fill(plot_.input, host_.input());
        if (plot_.sideChain) fill(*plot_.sideChain, host_.sideChain());
        host_.process();
        played_ += kBlock;
        while (static_cast<double>(played_) >= static_cast<double>(nextFrameMs()) * 0.001 * plot_.sampleRate)
            frame();
    }

    /// The result is how much could be read; an end of the input is noted.
    std::int64_t fill(AudioReader& reader, std::span<float* const> channels) {
        const bool isInput = &reader == &plot_.input;
        const std::size_t frames = isInput && inputEnded_ ? 0 : reader.read(channels, kBlock);
        for (float* channel : channels) std::fill(channel + frames, channel + kBlock, 0.0f);
        if (isInput && frames < kBlock) inputEnded_ = true;
        return static_cast<std::int64_t>(frames);
    }

    std::int64_t nextFrameMs() const { return streamTime + kFrameMs[frames_ % kFrameMs.size()]; }
    void frame() {
        streamTime = nextFrameMs();
        ++frames_;
        host_.readLevels(levels_);
        ui_.frame();
    }

    const LimitingPlot& plot_;
    OfflineHost host_;
    LevelExchange levels_;
    interface::ExchangeLink link_;
    gui::OffscreenInterface ui_;
    std::int64_t read_ = 0;
    std::int64_t played_ = 0;
    std::size_t frames_ = 0;
    bool inputEnded_ = false;
};

void check(const LimitingPlot& plot) {
    if (!(plot.sampleRate >= kLowestSampleRate && plot.sampleRate <= kHighestSampleRate))
        throw std::invalid_argument("the sample rate is out of range");
    if (!(plot.width >= 1.0f && plot.height >= 1.0f && plot.width <= 8192.0f && plot.height <= 8192.0f))
        throw std::invalid_argument("the size is out of range");
}

}  // namespace

void writeLimitingPlot(const std::filesystem::path& file, const LimitingPlot& plot) {
    check(plot);
    Plotter plotter(plot);
    plotter.run();
    plotter.write(file);
}

}  // namespace vanta
