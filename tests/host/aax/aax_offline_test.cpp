#include <functional>

#include "host/aax_host/offline_run.hpp"
#include "tests/host/aax/aax_fixture.hpp"

namespace vanta::test {
namespace {

/// A selection in memory, in the host's order. It may deliver in pieces, and fail.
class Selection final : public AAX_IHostProcessorDelegate {
public:
    explicit Selection(std::vector<Signal> channels) : channels_(std::move(channels)) {}

    AAX_Result GetAudio(float* const* buffers, std::int32_t channels, std::int64_t location,
                        std::int32_t* samples) override {
        if (++calls == failingCall) return -77;
        *samples = std::min(*samples, atMost);
        for (std::int32_t c = 0; c < channels; ++c) {
            const Signal& source = channels_[static_cast<std::size_t>(c)];
            for (std::int32_t i = 0; i < *samples; ++i) {
                const auto at = static_cast<std::size_t>(location + i);
                buffers[c][i] = at < source.size() ? source[at] : 0.0f;
            }
        }
        return AAX_SUCCESS;
    }
    AAX_ITransport* GetTransport() override { return nullptr; }
    std::size_t length() const { return channels_.front().size(); }

    int calls = 0;
    int failingCall = -1;
    std::int32_t atMost = 1 << 20;

private:
    std::vector<Signal> channels_;
};

std::vector<Signal> material(std::size_t channels, std::size_t length) {
    std::vector<Signal> made;
    for (std::size_t c = 0; c < channels; ++c) {
        made.push_back(pinkNoise(c + 3, length, 0.15));
        const Signal beats = bursts(150.0 + 60.0 * static_cast<double>(c), kAaxRate, length, 2000, 5000, 0.7);
        std::ranges::transform(made.back(), beats, made.back().begin(), std::plus<float>());
    }
    return made;
}

class AaxOffline : public AaxFixture {
protected:
    static void setUp(AaxSession& session) {
        session.host.setValue("0", 0.3);
        session.host.setValue("9", 0.2);
        session.host.setValue("10", 1.0);
        session.idle();
    }

    AAX_Result run(AaxSession& session, Selection& selection, std::vector<Signal>& output,
                   std::int32_t window = 4096, bool analyzes = false) {
        output = std::vector<Signal>(
            static_cast<std::size_t>(AAX_StemChannelCount(session.host.component().outputStem())));
        return runOffline({session.host, selection, window,
                           [&](std::int64_t location) {
                               const auto left = static_cast<std::int64_t>(selection.length()) - location;
                               return static_cast<std::int32_t>(std::min<std::int64_t>(window, left));
                           },
                           [&](std::span<const float* const> made, std::int32_t samples) {
                               for (std::size_t c = 0; c < output.size(); ++c)
                                   output[c].insert(output[c].end(), made[c], made[c] + samples);
                               return true;
                           },
                           analyzes});
    }
};

TEST_F(AaxOffline, EqualsAlignedRealTimeInEveryLayout) {
    for (ChannelLayout layout = 0; layout < kChannelLayoutCount; ++layout) {
        SCOPED_TRACE(channelLayoutName(layout));
        const auto channels = static_cast<std::size_t>(channelCount(layout));
        const auto input = material(channels, 20000);
        AaxSession live(component(layout));
        setUp(live);
        live.host.reset();
        const auto latency = static_cast<std::size_t>(live.plugin().latency());
        auto expected = input;
        for (Signal& channel : expected) channel.resize(20000 + latency);
        live.play(expected);
        // The window is shorter than the latency, and what comes is shorter than the window.
        AaxSession session(component(layout, true));
        setUp(session);
        Selection selection(input);
        selection.atMost = 700;
        std::vector<Signal> output;
        ASSERT_EQ(run(session, selection, output, 1000), AAX_SUCCESS);
        for (std::size_t c = 0; c < channels; ++c)
            EXPECT_LT(nullDb(output[c], std::span(expected[c]).subspan(latency)), -120.0) << c;
    }
}

TEST_F(AaxOffline, ASelectionShorterThanTheLatencyPrimesInFull) {
    AaxSession session(component(kStereoLayout, true));
    setUp(session);
    ASSERT_GT(session.plugin().latency(), 300);
    const auto input = material(2, 100);
    Selection selection(input);
    std::vector<Signal> output;
    ASSERT_EQ(run(session, selection, output), AAX_SUCCESS);
    ASSERT_EQ(output[0].size(), 100u);
    EXPECT_GT(peak(output[0]), 0.3) << "it is all there";
}

TEST_F(AaxOffline, AFailingHostEndsTheRenderWithItsError) {
    const auto input = material(2, 9000);
    std::vector<Signal> whole;
    AaxSession session(component(kStereoLayout, true));
    setUp(session);
    Selection selection(input);
    ASSERT_EQ(run(session, selection, whole, 1000), AAX_SUCCESS);
    const int calls = selection.calls;
    ASSERT_GT(calls, 18);
    std::vector<Signal> output;
    for (int failing = 1; failing <= calls; ++failing) {
        Selection tired(input);
        tired.failingCall = failing;
        EXPECT_EQ(run(session, tired, output, 1000), -77) << failing;
        EXPECT_EQ(tired.calls, failing) << "it is not asked again";
        EXPECT_LT(output[0].size(), 9000u);
    }
    Selection again(input);
    ASSERT_EQ(run(session, again, output, 1000), AAX_SUCCESS);
    EXPECT_EQ(output, whole) << "nothing of the failures is left";
    // Where nothing comes the render must not wait for ever.
    for (const std::int32_t none : {0, -5}) {
        Selection empty(input);
        empty.atMost = none;
        EXPECT_EQ(run(session, empty, output, 1000), AAX_ERROR_NO_AUDIO);
    }
}

TEST_F(AaxOffline, WhatCannotBeRenderedIsNothing) {
    AaxSession session(component(kStereoLayout, true));
    setUp(session);
    Selection selection(material(2, 64));
    const std::unique_ptr<AAX_IHostProcessor> processor(session.host.component().effect.newHostProcessor());
    std::vector<float> buffer(64);
    float* const channels[] = {buffer.data(), buffer.data()};
    const std::int32_t samples = 64;
    const std::int32_t none = 0;
    EXPECT_EQ(processor->PreRender(2, 2, 64), AAX_ERROR_NULL_OBJECT) << "before it knows its instance";
    ASSERT_EQ(processor->Initialize(&session.host.parameters(), &selection), AAX_SUCCESS);
    EXPECT_EQ(processor->PreRender(2, 2, -1), AAX_ERROR_INVALID_ARGUMENT);
    for (const std::int32_t* size : {static_cast<const std::int32_t*>(nullptr), &none})
        EXPECT_EQ(processor->RenderAudio(channels, 2, channels, 2, size), AAX_SUCCESS);
    EXPECT_EQ(processor->RenderAudio(nullptr, 0, channels, 2, &samples), AAX_SUCCESS);
    EXPECT_EQ(processor->RenderAudio(channels, 2, nullptr, 0, &samples), AAX_SUCCESS);
    EXPECT_EQ(selection.calls, 0);
    // An analysis renders to nobody, also if it was not announced; one channel serves all.
    EXPECT_EQ(processor->AnalyzeAudio(channels, 1, &samples), AAX_SUCCESS);
    EXPECT_GT(selection.calls, 0);
}

}  // namespace
}  // namespace vanta::test
