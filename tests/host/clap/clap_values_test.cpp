#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <thread>

#include "host/clap/clap_events.hpp"
#include "tests/host/clap/clap_test.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

using ClapValues = ClapTest;

std::vector<double> values(const ClapHost& host) {
    std::vector<double> all;
    for (int i = 0; i < host.parameterCount(); ++i) all.push_back(host.value(i));
    return all;
}

TEST_F(ClapValues, ParametersReadAsTheyAreWritten) {
    ClapHost host;
    const clap_plugin_t* plugin = &host.plugin();
    const clap_plugin_params_t& params = host.params();
    ASSERT_EQ(host.parameterCount(), 31);
    int bypasses = 0;
    for (int i = 0; i < host.parameterCount(); ++i) {
        const clap_param_info_t each = info(host, i);
        SCOPED_TRACE(each.name);
        EXPECT_EQ(each.id, static_cast<clap_id>(i));
        EXPECT_STRNE(each.module, "");
        const bool isStepped = (each.flags & CLAP_PARAM_IS_STEPPED) != 0;
        if (each.flags & CLAP_PARAM_IS_BYPASS) {
            ++bypasses;
            EXPECT_TRUE(isStepped && each.min_value == 0.0 && each.max_value == 1.0);
        }
        for (int step = 0; step <= 200; ++step) {
            double at = each.min_value + (each.max_value - each.min_value) * step / 200.0;
            if (isStepped) at = std::floor(at + 0.5);
            const std::string text = host.text(i, at);
            double back = -1e9;
            ASSERT_TRUE(params.text_to_value(plugin, each.id, text.c_str(), &back)) << text;
            EXPECT_EQ(host.text(i, back), text);
            EXPECT_TRUE(!isStepped || back == at);
        }
        for (const double edge : {each.max_value, each.min_value}) {
            host.setValue(i, edge);
            EXPECT_EQ(host.value(i), edge);
        }
        double value = 0.0;
        EXPECT_FALSE(params.text_to_value(plugin, each.id, "~?", &value));
        char small[4] = "zzz";
        EXPECT_TRUE(params.value_to_text(plugin, each.id, each.max_value, small, 3));
        EXPECT_LE(std::strlen(small), 2u);
        for (const double odd : {-1e30, 1e30, std::numeric_limits<double>::infinity()}) {
            EXPECT_TRUE(host.text(i, odd) == host.text(i, odd < 0.0 ? each.min_value : each.max_value));
        }
        EXPECT_FALSE(params.value_to_text(plugin, each.id, std::nan(""), small, 4));
        EXPECT_FALSE(params.value_to_text(plugin, each.id, 0.0, small, 0));
    }
    EXPECT_EQ(bypasses, 1);
    host.idle();
    EXPECT_TRUE(host.output.events.empty()) << "a host knows what it has said";
    EXPECT_EQ(host.rescans, 0);
    clap_param_info_t none{};
    double value = 0.0;
    EXPECT_FALSE(params.get_info(plugin, 31, &none));
    EXPECT_FALSE(params.get_value(plugin, CLAP_INVALID_ID, &value));
}

TEST_F(ClapValues, EventsOfAllKindsAreSurvived) {
    Random random(7);
    ClapHost host;
    ASSERT_TRUE(host.activate(kRate, kLargest));
    const double oddValues[] = {std::nan(""), -1e300, 1e300, std::numeric_limits<double>::infinity(),
                                0.5,          -3.0};
    for (int round = 0; round < 400; ++round) {
        RawBlock block(static_cast<std::uint32_t>(random.between(0, 512)));
        for (int n = random.between(0, 40); n > 0; --n) {
            ClapEvent event{};
            for (std::byte& each : event.bytes) each = static_cast<std::byte>(random.next());
            event.header.type = static_cast<std::uint16_t>(random.between(0, 14));
            if (random.between(0, 3)) event.header.space_id = CLAP_CORE_EVENT_SPACE_ID;
            if (random.between(0, 3)) event.header.size = static_cast<std::uint32_t>(random.between(0, 128));
            if (random.between(0, 3)) event.header.time = static_cast<std::uint32_t>(random.between(0, 600));
            if (random.between(0, 1)) {
                event = valueEvent(event.header.time, static_cast<clap_id>(random.between(-2, 33)),
                                   oddValues[random.between(0, 5)]);
            }
            block.events.events.push_back(event);
        }
        clap_event_transport_t transport =
            block.events.events.empty() ? clap_event_transport_t{} : block.events.events[0].transport;
        if (round % 2) block.process.transport = &transport;
        ASSERT_EQ(block.run(host), CLAP_PROCESS_CONTINUE);
        ASSERT_TRUE(block.isFinite());
        if (round % 16 == 0) host.idle();
    }
    expectValuesInRange(host);
}

TEST(ClapEventSource, TransportAndPortsAreUnderstood) {
    ClapInput input;
    ClapEvent& transport = input.events.emplace_back();
    transport.transport = {};
    transport.header = {sizeof(transport.transport), 17, CLAP_CORE_EVENT_SPACE_ID, CLAP_EVENT_TRANSPORT, 0};
    transport.transport.flags =
        CLAP_TRANSPORT_HAS_TEMPO | CLAP_TRANSPORT_HAS_BEATS_TIMELINE | CLAP_TRANSPORT_IS_PLAYING;
    transport.transport.tempo = 90.0;
    transport.transport.song_pos_beats = 5 * CLAP_BEATTIME_FACTOR / 2;
    input.events.push_back(midiEvent(18, {0xB0, 1, 2}));
    input.events.back().midi.port_index = 1;
    input.events.push_back(midiEvent(0xFFFFFFFF, {0xB0, 3, 4}));
    const clap_input_events_t list = input.list();
    ClapEvents events(&list);
    HostEvent event;
    ASSERT_TRUE(events.next(event));
    EXPECT_EQ(event.kind, HostEvent::Kind::Transport);
    EXPECT_EQ(event.offset, 17);
    EXPECT_EQ(event.transport.tempo, 90.0);
    EXPECT_EQ(event.transport.beats, 2.5);
    EXPECT_TRUE(event.transport.isRolling);
    ASSERT_TRUE(events.next(event)) << "there is no second port of notes";
    EXPECT_EQ(event.midi.data1, 3);
    EXPECT_EQ(event.offset, std::numeric_limits<int>::max());
    EXPECT_FALSE(events.next(event));
    EXPECT_FALSE(transportOf(nullptr).isRolling);
}

TEST_F(ClapValues, BrokenStreamsChangeNothing) {
    ClapHost host;
    const auto before = values(host);
    const auto& extension = *host.extension<clap_plugin_state_t>(CLAP_EXT_STATE);
    for (const std::int64_t answer : {std::int64_t{-1}, std::int64_t{0}, std::int64_t{1} << 40}) {
        std::int64_t said = answer;
        const clap_ostream_t out{&said, [](const clap_ostream_t* to, const void*, std::uint64_t) {
                                     return *static_cast<std::int64_t*>(to->ctx);
                                 }};
        const clap_istream_t in{&said, [](const clap_istream_t* from, void*, std::uint64_t) {
                                    return *static_cast<std::int64_t*>(from->ctx);
                                }};
        EXPECT_FALSE(extension.save(&host.plugin(), &out)) << answer;
        EXPECT_FALSE(extension.load(&host.plugin(), &in)) << answer;
    }
    const clap_istream_t endless{nullptr, [](const clap_istream_t*, void* to, std::uint64_t size) {
                                     std::memset(to, 0, size);
                                     return static_cast<std::int64_t>(size);
                                 }};
    EXPECT_FALSE(extension.load(&host.plugin(), &endless));
    EXPECT_EQ(values(host), before);
}

TEST_F(ClapInside, AControllerReachesTheHostAsSoonAsItHasRoom) {
    ClapHost host(factory());
    hosted(host).model().statics().controllers.assign(20, 0);
    ASSERT_TRUE(host.activate(kRate, kLargest));
    const auto turn = [&](std::uint8_t data) {
        RawBlock block(64);
        block.events.events = {midiEvent(10, {0xB0, 20, data})};
        EXPECT_EQ(block.run(host), CLAP_PROCESS_CONTINUE);
    };
    turn(10);
    host.output.capacity = 0;
    host.idle();
    EXPECT_TRUE(host.output.events.empty()) << "the host had no room";
    turn(64);
    host.output.capacity = 100;
    host.idle();
    ASSERT_EQ(host.output.events.size(), 1u) << "the last of several";
    const clap_event_param_value_t told = host.output.events[0].value;
    EXPECT_EQ(told.header.type, CLAP_EVENT_PARAM_VALUE);
    EXPECT_EQ(told.header.flags, CLAP_EVENT_DONT_RECORD);
    EXPECT_EQ(told.param_id, 0u);
    EXPECT_EQ(told.value, host.value(0));
    EXPECT_NEAR(told.value, 30.0 * 64 / 127, 1e-4);
    hosted(host).model().statics().controllers.clear();
}

TEST_F(ClapInside, ChangesOfAllValuesAreReadAnew) {
    ClapHost host(factory());
    ASSERT_TRUE(host.activate(kRate, kLargest));
    GenericPlugin& model = hosted(host).model();
    const std::string file = (home / "own.qmp").string();
    ASSERT_TRUE(model.savePreset({file, "own", {}, -1, -1}));
    host.setValue(1, 0.0);
    host.idle();
    EXPECT_EQ(host.rescans, 0);
    ASSERT_TRUE(model.loadPreset({file, "own", {}, -1, -1}));
    host.idle();
    EXPECT_EQ(host.rescans, 1);
    EXPECT_GE(host.dirtyMarks, 1);
    for (const ClapEvent& each : host.output.events) EXPECT_EQ(each.header.flags, CLAP_EVENT_DONT_RECORD);

    host.output.events.clear();
    host.output.capacity = 0;
    model.parameterAt(0)->setValue(3.0f, 0);
    host.idle();
    ASSERT_TRUE(host.restore(host.save(0), 0));
    host.idle();
    EXPECT_EQ(host.rescans, 2);
    host.output.capacity = 100;
    host.flush();
    EXPECT_TRUE(host.output.events.empty()) << "what waited is older, and to restore is no edit";
}

TEST_F(ClapValues, AGestureIsRecordedFromItsBeginToItsEnd) {
    using Edit = HostCallbacks::Edit;
    const clap_host_t silent{};
    ClapReports reports(silent, 31);
    ClapOutput output;
    const auto write = [&](std::size_t capacity) {
        output.capacity = capacity;
        const clap_output_events_t out = output.list();
        reports.writeEdits(&out);
    };
    reports.parameterEdited(4, Edit::Begin, 0.0f);
    reports.parameterEdited(4, Edit::Value, 0.5f);
    write(1);
    reports.parameterEdited(4, Edit::End, 0.0f);
    write(2);
    write(99);
    reports.parameterEdited(4, Edit::Value, 0.5f);
    write(99);
    std::vector<std::pair<int, unsigned>> kinds;
    for (const ClapEvent& each : output.events) kinds.emplace_back(each.header.type, each.header.flags);
    EXPECT_THAT(kinds, testing::ElementsAre(
                           std::pair(CLAP_EVENT_PARAM_GESTURE_BEGIN, 0u),
                           std::pair(CLAP_EVENT_PARAM_VALUE, 0u), std::pair(CLAP_EVENT_PARAM_GESTURE_END, 0u),
                           std::pair(CLAP_EVENT_PARAM_VALUE, unsigned{CLAP_EVENT_DONT_RECORD})));
}

TEST_F(ClapInside, AnOfflineRenderDoesNotWaitForTheMainThread) {
    ClapHost host(factory());
    hosted(host).model().statics().controllers.assign(20, 0);
    host.setOffline(true);
    ASSERT_TRUE(host.activate(kRate, kLargest));
    std::thread([&] {
        RawBlock block(64);
        block.events.events = {midiEvent(10, {0xB0, 20, 127})};
        EXPECT_EQ(block.run(host), CLAP_PROCESS_CONTINUE);
        EXPECT_EQ(hosted(host).position(0), 1.0) << "the model has followed";
    }).join();
    host.idle();
    EXPECT_EQ(host.output.events.size(), 1u);
    hosted(host).model().statics().controllers.clear();
}

}  // namespace
}  // namespace vanta::test
