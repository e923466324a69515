#include <array>
#include <atomic>
#include <thread>

#include "tests/host/aax/aax_fixture.hpp"

namespace vanta::test {
namespace {

class AaxMisuse : public AaxFixture {};

bool isFinite(const std::vector<Signal>& channels) {
    return std::ranges::all_of(channels, [](const Signal& signal) {
        return std::ranges::all_of(signal, [](float x) { return std::isfinite(x) && std::abs(x) < 100.0f; });
    });
}

TEST_F(AaxMisuse, BeforeTheStartEverythingIsRefused) {
    AaxInstance host(component(), kAaxRate);
    AAX_IEffectParameters& plugin = host.parameters();
    AAX_SPlugInChunk chunk{};
    GenericPlugin* model = nullptr;
    std::uint32_t size = 0;
    bool equal = false;
    EXPECT_EQ(plugin.Initialize(nullptr), AAX_ERROR_NULL_OBJECT);
    EXPECT_EQ(plugin.UpdateParameterNormalizedValue("0", 0.5, 0), AAX_ERROR_NULL_OBJECT);
    EXPECT_EQ(plugin.GenerateCoefficients(), AAX_ERROR_NULL_OBJECT);
    EXPECT_EQ(plugin.GetChunkSize(AAX_FourChars("elck"), &size), AAX_ERROR_NULL_OBJECT);
    EXPECT_EQ(plugin.GetChunk(AAX_FourChars("QMPr"), &chunk), AAX_ERROR_NULL_OBJECT);
    EXPECT_EQ(plugin.SetChunk(AAX_FourChars("QMPr"), &chunk), AAX_ERROR_NULL_OBJECT);
    EXPECT_EQ(plugin.CompareActiveChunk(&chunk, &equal), AAX_ERROR_NULL_OBJECT);
    EXPECT_EQ(plugin.GetCustomData(0, sizeof(model), &model, &size), AAX_ERROR_NULL_OBJECT);
    EXPECT_EQ(plugin.SetParameterNormalizedValue("0", 0.5), AAX_ERROR_INVALID_PARAMETER_ID);
    std::vector<Signal> out(2, Signal(64, 3.0f));
    float* const outputs[] = {out[0].data(), out[1].data()};
    const float* const inputs[] = {outputs[0], outputs[1]};
    host.render({inputs, nullptr, outputs, 64, {}});
    ASSERT_EQ(host.initialize(), AAX_SUCCESS);
    EXPECT_NE(host.initialize(), AAX_SUCCESS) << "once is enough";
}

TEST_F(AaxMisuse, ValuesThatMakeNoSenseAreRefused) {
    AaxSession session(component());
    const auto before = session.plugin().parameterValues();
    for (const char* id : {"", "31", "-1", "0x", "0 ", "3abc", "99999999999", "MasterBypass"})
        EXPECT_EQ(session.host.setValue(id, 0.7), AAX_ERROR_INVALID_PARAMETER_ID) << id;
    EXPECT_EQ(session.host.parameters().UpdateParameterNormalizedValue(nullptr, 0.5, 0),
              AAX_ERROR_INVALID_PARAMETER_ID);
    EXPECT_EQ(session.host.setValue("0", std::nan("")), AAX_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(session.plugin().parameterValues(), before);
    EXPECT_EQ(session.host.setValue("0", 1e300), AAX_SUCCESS);
    session.idle();
    session.expectAgreement(0, 30.0f);
    EXPECT_EQ(session.host.setValue("0", -HUGE_VAL), AAX_SUCCESS);
    session.idle();
    session.expectAgreement(0, 0.0f);
    for (const float rate : {0.0f, -1.0f, 1e9f, std::nanf("")}) {
        AaxInstance host(component(), rate);
        EXPECT_EQ(host.initialize(), AAX_ERROR_INVALID_ARGUMENT) << rate;
    }
}

TEST_F(AaxMisuse, AnyBlockAtAnyRateIsSurvived) {
    Random random(9);
    for (const ChannelLayout layout : {kMonoLayout, kStereoLayout, kChannelLayoutCount - 1}) {
        AaxSession session(component(layout));
        session.host.setValue("0", 0.4);
        constexpr std::array kRates{
            48000.0f, 0.0f, 44100.0f, 1e9f, 192000.0f, 8000.0f, std::numeric_limits<float>::quiet_NaN()};
        for (int round = 0; round < 60; ++round) {
            session.host.setSampleRate(kRates[static_cast<std::size_t>(random.between(0, 6))]);
            if (round % 7 == 0) session.host.reset();
            if (round % 11 == 0) session.host.transport.isThere = !session.host.transport.isThere;
            auto channels = session.silence(
                static_cast<std::size_t>(random.between(0, 20) == 0 ? 40000 : random.between(1, 600)));
            for (Signal& channel : channels)
                channel = whiteNoise(static_cast<std::uint64_t>(round), channel.size(), 0.9);
            channels[0][0] = round % 3 == 0 ? std::nanf("") : 1e30f;
            std::vector<AAX_CMidiPacket> packets;
            for (int i = random.between(0, 5); i > 0; --i) {
                const auto byte = [&random] { return static_cast<std::uint8_t>(random.between(0, 255)); };
                packets.push_back({static_cast<std::uint32_t>(random.next()),
                                   static_cast<std::uint32_t>(random.between(0, 4)),
                                   {byte(), byte(), byte(), 0}});
            }
            session.send(packets);
            session.play(channels, static_cast<int>(channels[0].size()));
            EXPECT_TRUE(isFinite(channels)) << layout << " " << round;
            // None at all, and fewer than none.
            float* const outputs[] = {channels[0].data(), channels[0].data(), channels[0].data(),
                                      channels[0].data(), channels[0].data(), channels[0].data(),
                                      channels[0].data(), channels[0].data(), channels[0].data(),
                                      channels[0].data()};
            const float* inputs[10]{};
            session.host.render({inputs, nullptr, outputs, 0, {}});
            session.host.render({inputs, nullptr, outputs, -5, {}});
            session.host.idle();
        }
        EXPECT_EQ(session.host.latency(), session.processor().latency());
    }
}

TEST_F(AaxMisuse, ThreeThreadsAtTheParametersWhileRatesChange) {
    AaxSession session(component());
    AaxInstance::Chunks chunks;
    ASSERT_EQ(session.host.save(chunks), AAX_SUCCESS);
    session.plugin().statics().controllers.assign(20, 0);
    std::atomic<bool> done{false};
    std::thread audio([&] {
        auto channels = session.silence(256);
        for (int n = 0; n < 2000; ++n) {
            if (n % 50 == 0) session.host.setSampleRate(n % 100 == 0 ? 44100.0f : 48000.0f);
            if (n % 30 == 0) session.host.reset();
            session.send({{7, 3, {0xB0, 20, static_cast<std::uint8_t>(n % 128), 0}}});
            session.play(channels, 256);
        }
        done = true;
    });
    std::vector<std::thread> hosts;
    for (int t = 0; t < 3; ++t) {
        hosts.emplace_back([&, t] {
            Random random(static_cast<std::uint64_t>(t));
            for (int n = 0; !done; ++n) {
                const int index = random.between(0, session.count() - 1);
                // A factor of oversampling builds everything anew, again and again.
                if (index != 9) session.host.setValue(std::to_string(index), 0.01 * random.between(0, 100));
                session.host.setValue("MasterBypassID", n % 2);
                if (t == 0) session.host.restore(chunks);
                if (t == 1) session.host.parameters().GenerateCoefficients();
                if (t == 2) session.adapter().syncLevels();
                AaxInstance::Chunks saved;
                session.host.save(saved);
            }
        });
    }
    audio.join();
    for (std::thread& host : hosts) host.join();
    session.playSilence();
    session.idle();
    session.playSilence();
    session.idle();
    EXPECT_EQ(session.host.latency(), session.processor().latency());
    for (int i = 0; i < session.count(); ++i) {
        EXPECT_EQ(session.model(i).value(), session.audio(i).value()) << session.model(i).name();
        ASSERT_EQ(session.host.setValue(std::to_string(i), 0.25), AAX_SUCCESS);
        session.idle();
        EXPECT_EQ(session.audio(i).value(), session.model(i).value()) << session.model(i).name();
    }
}

TEST_F(AaxMisuse, InstancesComeAndGoOnSeveralThreads) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t) {
        threads.emplace_back([&, t] {
            for (int n = 0; n < 6; ++n) {
                AaxSession session(component((t * 6 + n) % kChannelLayoutCount));
                session.host.setValue("9", 0.2);
                session.playSilence(n % 2 == 0 ? 0 : 100);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(GenericPlugin::instanceCount(), 0);
}

}  // namespace
}  // namespace vanta::test
