#include "tests/host/aax/aax_fixture.hpp"

namespace vanta::test {
namespace {

class AaxRender : public AaxFixture {};

TEST_F(AaxRender, AResetRequestResetsOnce) {
    AaxSession session(component());
    std::int32_t request = 0;
    for (const AAX_CFieldIndex field : {8, 10}) {
        EXPECT_EQ(session.host.parameters().ResetFieldData(field, &request, sizeof(request)), AAX_SUCCESS);
        EXPECT_EQ(request, 0);
    }
    EXPECT_EQ(session.host.parameters().ResetFieldData(9, &request, 2), AAX_SUCCESS);
    EXPECT_EQ(request, 0);
    session.host.transport.isThere = false;
    session.playSilence(48000);
    EXPECT_GT(session.processor().beatPosition(), 1.9);
    session.host.reset();
    session.playSilence(512);
    EXPECT_LT(session.processor().beatPosition(), 0.03) << "the beats begin anew";
    session.playSilence(48000);
    EXPECT_GT(session.processor().beatPosition(), 1.9) << "and go on";
}

TEST_F(AaxRender, TheTransportIsTheHostsOrNone) {
    AaxSession session(component());
    session.playSilence();
    session.host.transport = {.numerator = 3, .denominator = 8, .bar = 5, .beat = 2, .ticks = 480};
    session.playSilence();
    EXPECT_DOUBLE_EQ(session.processor().beatPosition(), (2 - 1 + 5 * 3) * 0.5 + 0.5);
    session.host.transport.ticksPerBeat = 480;
    session.playSilence();
    EXPECT_DOUBLE_EQ(session.processor().beatPosition(), 17.0);
    session.host.transport.denominator = 0;
    session.playSilence();
    EXPECT_EQ(session.processor().beatPosition(), 0.0) << "no meter, no position";
}

TEST_F(AaxRender, TheMasterBypassGoesByThePacketAndStaysAligned) {
    AaxSession session(component());
    session.host.setValue("0", 0.4);
    session.idle();
    std::vector<Signal> tone(2, sine(440, kAaxRate, 48000, 0.3));
    session.play(tone);
    EXPECT_NEAR(db(amplitudeAt(std::span(tone[0]).subspan(24000), 440.0 / kAaxRate) / 0.3), 10.0, 1.0);
    ASSERT_EQ(session.host.setValue("MasterBypassID", 1.0), AAX_SUCCESS);
    session.idle();
    const Signal dry = whiteNoise(1, 48000, 0.2);
    std::vector<Signal> through(2, dry);
    session.play(through);
    const auto latency = static_cast<std::size_t>(session.host.latency());
    EXPECT_EQ(
        nullDb(std::span(through[0]).subspan(20000 + latency, 20000), std::span(dry).subspan(20000, 20000)),
        -400.0);
}

TEST_F(AaxRender, ASideChainBelowTheChannelsIsNone) {
    // Quiet material, a loud key: only the key calls for reduction.
    const auto level = [&](ChannelLayout layout, bool connected) {
        AaxSession session(component(layout));
        session.host.setValue("0", 0.6);
        session.plugin().sideChainTriggering.setMapped(true);
        session.idle();
        const Signal key = sine(90, kAaxRate, 24000, 0.9);
        auto channels = session.silence(24000);
        for (Signal& channel : channels) channel = sine(300, kAaxRate, 24000, 0.05);
        session.play(channels, 512, connected ? &key : nullptr);
        return db(amplitudeAt(std::span(channels.back()).subspan(12000), 300.0 / kAaxRate) / 0.05);
    };
    for (const ChannelLayout layout : {kMonoLayout, kStereoLayout, 6}) {
        EXPECT_NEAR(level(layout, false), 18.0, 0.1) << layout;
        EXPECT_NEAR(level(layout, true), 18.0 - 17.1, 1.0) << layout;
    }
}

TEST_F(AaxRender, TheMeterShowsTheDeeperReductionOfAPair) {
    for (const ChannelLayout layout : {kStereoLayout, 6}) {
        AaxSession session(component(layout));
        EXPECT_EQ(session.host.meter(), 0.0f);
        session.host.setValue("0", 0.4);
        session.plugin().channelLinkTransients.setValue(0.0f, 0);
        session.plugin().channelLinkRelease.setValue(0.0f, 0);
        session.idle();
        auto channels = session.silence(96000);
        channels[1] = sine(200, kAaxRate, 96000, 0.9);
        session.play(channels);
        // 0.9 at +12 dB is 11 dB above full scale. Other layouts show their first channel.
        const float expected = layout == kStereoLayout ? 0.72f : 0.0f;
        EXPECT_NEAR(session.host.meter(), expected, 0.03f) << layout;
        auto quiet = session.silence(96000);
        session.play(quiet);
        EXPECT_NEAR(session.host.meter(), 0.0f, 0.05f);
    }
}

TEST_F(AaxRender, AMonoInputServesBothChannelsOfAStereoOutput) {
    AaxInstance host(component(), kAaxRate, AaxInstance::Answers::AtOnce, AAX_eStemFormat_Mono);
    ASSERT_EQ(host.initialize(), AAX_SUCCESS);
    const Signal tone = sine(440, kAaxRate, 8192, 0.3);
    std::vector<Signal> out(2, Signal(8192));
    const float* const inputs[] = {tone.data()};
    float* const outputs[] = {out[0].data(), out[1].data()};
    host.render({inputs, nullptr, outputs, 8192, {}});
    EXPECT_EQ(out[0], out[1]);
    EXPECT_GT(peak(out[0]), 0.25);
    // No other pair of stems fits.
    AaxInstance other(component(6), kAaxRate, AaxInstance::Answers::AtOnce, AAX_eStemFormat_Stereo);
    EXPECT_EQ(other.initialize(), AAX_ERROR_INVALID_ARGUMENT);
}

}  // namespace
}  // namespace vanta::test
