#include <gtest/gtest.h>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "limiter/resources/style_resources.hpp"
#include "limiter/styles/engine_layout.hpp"
#include "limiter/styles/style_check.hpp"
#include "limiter/styles/style_record.hpp"
#include "limiter/styles/style_source.hpp"
#include "tests/support/temp_folder.hpp"

namespace vanta::test {
namespace {

const EngineLayout& limiterLayout() {
    static const EngineLayout layout(limiterConfiguration());
    return layout;
}

int positionOf(std::string_view name) {
    return limiterLayout().findParameter(name).value_or(-1);
}

float valueOf(std::span<const float> values, std::string_view name) {
    return values[static_cast<std::size_t>(positionOf(name))];
}

std::vector<float> storedStyle(std::string_view name) {
    for (const Resource& resource : styleResources()) {
        if (resource.name == name) return readStyleRecord(resource.bytes);
    }
    throw std::runtime_error(fmt::format("no resource {}", name));
}

/// The message of the fault that the source gives, or "none".
std::string faultOf(std::string_view source) {
    try {
        parseStyleSource(limiterLayout(), source, "x.style");
    } catch (const StyleError& error) {
        return error.what();
    }
    return "none";
}

// ---- the tables ----

// Where a stored record has them: the sets one after another, each with its count in front.
TEST(EngineLayout, PutsEveryNameAtItsPlaceInTheRecord) {
    const std::pair<const char*, int> cases[] = {{"Main Threshold", 2},
                                                 {"Custom 2", 7},
                                                 {"Num Output SmartClippers", 10},
                                                 {"Detector 2 Knee", 84},
                                                 {"Capacitor 12 Hold", 277},
                                                 {"VCA 6 Num SmartClippers In Gain Path", 347},
                                                 {"Slot 1 Source", 349},
                                                 {"Slot 80 Target", 748}};
    for (const auto& [name, position] : cases) EXPECT_EQ(positionOf(name), position) << name;
}

TEST(EngineLayout, NumbersSourcesAndTargets) {
    const EngineLayout& layout = limiterLayout();
    for (const auto& [name, number] :
         {std::pair("Custom 2", 7), {"Crossover 1 Output 2", 21}, {"VCA 6", 107}}) {
        EXPECT_EQ(layout.findSource(name), number) << name;
    }
    for (const auto& [name, number] :
         {std::pair("Output", 6), {"VCA 6 Look-ahead", 324}, {"Slot 80 Level", 404}}) {
        EXPECT_EQ(layout.findTarget(name), number) << name;
    }
    EXPECT_FALSE(layout.findTarget("Detector 2 Threshold"));
}

float engineValue(std::string_view name, float stored) {
    const ParameterDescription& d =
        limiterLayout().parameters()[static_cast<std::size_t>(positionOf(name))].description;
    return d.curveOffset + curveFunction(d.curve)(stored) * d.curveScale;
}

TEST(EngineLayout, TurnsStoredValuesIntoEngineValues) {
    const struct {
        const char* name;
        float stored, expected, tolerance;
    } cases[] = {{"Detector 1 Ratio", 0.0f, 1.0f, 0},
                 {"Detector 1 Ratio", 0.9f, 10.0f, 1e-5f},
                 {"Detector 1 Ratio", 1.0f, 100.0f, 1e-5f},
                 {"Main Ratio", 0.9f, 9.0f, 1e-5f},
                 {"Filter Set 1 Low Pass Freq", 1.0f, std::log2(30000.0f), 2e-6f},
                 {"Filter Set 1 High Pass Freq", 0.0f, std::log2(5.0f), 1e-6f},
                 {"Crossover 3 Frequency", 0.5f, std::log2(std::sqrt(5.0f * 30000.0f)), 2e-6f},
                 {"Detector 1 Stereo Link", 0.0f, -1.0f, 0},
                 {"Main Attack", 0.39764f, 0.25f, 1.3e-5f},
                 {"Main Release", 0.41774f, 0.5f, 2e-5f},
                 {"Main Release", 1.0f, 10.0f, 0},
                 {"Capacitor 1 Attack Smoothing", -0.25f, -0.05f, 1e-8f},
                 {"Peak Hold 1 Hold", 0.1f, 0.1f, 1e-7f},
                 {"Slot 1 Level", 0.5f, 1.0f, 0},
                 {"Slot 1 Level", 0.14655f, 0.1f, 5e-6f}};
    for (const auto& c : cases) {
        EXPECT_NEAR(engineValue(c.name, c.stored), c.expected, c.tolerance) << c.name << " " << c.stored;
    }
}

/// A slot's contribution: what the source says, scaled by range and level.
float connected(std::string_view source, std::string_view target, float level, float value) {
    const EngineLayout& layout = limiterLayout();
    const EngineSource& from = layout.sources()[static_cast<std::size_t>(layout.findSource(source).value())];
    const TargetRange& range = layout.rangeOf(layout.findTarget(target).value());
    const float sum = value * range.factorFor(static_cast<int>(from.kind)) * slotLevelCurve(level);
    return range.isAudio ? sum : std::clamp(sum, range.minimum, range.maximum);
}

TEST(EngineRanges, ScaleEachSourceToItsTarget) {
    const struct {
        const char *source, *target;
        float level, value, expected;
    } cases[] = {// A knob of 5 ms at its end and at 0.2 ms reaches look-ahead, hold and window as it reads.
                 {"Custom 1", "VCA 1 Look-ahead", 0.14655f, 1.0f, 5.0f},
                 {"Custom 1", "PkH 1 Hold", 0.14655f, 0.2f / 5, 0.2f},
                 // Limits: 5 ms of look-ahead, 50 ms of hold.
                 {"Custom 1", "VCA 1 Look-ahead", 0.5f, 1.0f, 5.0f},
                 {"Custom 1", "PkH 1 Hold", 0.5f, 1.0f, 50.0f},
                 // A threshold arrives as it is, also through a VCA.
                 {"Main Threshold", "Det 1 Threshold", 0.5f, -12.0f, -12.0f},
                 {"VCA 3", "Det 1 Threshold", 0.5f, -12.0f, -12.0f},
                 {"Detector 1", "Det 2 Threshold", 0.5f, 10.0f, 25.0f},
                 {"Capacitor 1", "Det 2 Threshold", 0.5f, 10.0f, 10.0f},
                 // Times arrive in seconds as they are; a gain change of 24 dB spans the target.
                 {"Main Release", "Cap 1 Release", 0.5f, 0.5f, 0.5f},
                 {"Capacitor 3", "Cap 1 Release", 0.5f, 24.0f, 10.0f},
                 {"Mixer 1", "Main Ratio", 0.5f, 1.0f, 50.0f},
                 // Types without a factor of their own take the default.
                 {"VCA 1", "Sat 1 Drive", 0.5f, 0.5f, 36.0f},
                 {"Custom 1", "Slot 7 Level", 0.5f, 0.25f, 25.0f}};
    for (const auto& c : cases) {
        EXPECT_NEAR(connected(c.source, c.target, c.level, c.value), c.expected, 1e-4f * std::abs(c.expected))
            << c.source << " to " << c.target;
    }
}

// ---- the styles ----

TEST(Styles, AreTheRecordsInTheOrderOfTheStyleParameter) {
    std::string names;
    for (const Resource& resource : styleResources()) {
        names += std::string(resource.name.substr(0, resource.name.find('.'))) + " ";
        ASSERT_EQ(resource.bytes.size(), 3008u);
        const unsigned char header[12] = {'Q', 'D', 'y', 'n', 19, 0, 0, 0, 0xED, 0x02, 0, 0};
        EXPECT_TRUE(std::ranges::equal(resource.bytes.first(12), std::as_bytes(std::span(header))));
        for (const StyleFault& fault : checkStyle(limiterLayout(), readStyleRecord(resource.bytes))) {
            ADD_FAILURE() << resource.name << ": " << fault.message;
        }
    }
    EXPECT_TRUE(names.starts_with("transparent punchy dynamic allround aggressive modern bus safe "));
}

// ---- reading and writing ----

TEST(StyleSource, ReadsEveryForm) {
    const std::vector<float> values = parseStyleSource(limiterLayout(),
                                                       "# what it is\r\n"
                                                       "Num Active Detectors = 2   # both\r\n"
                                                       "\tDetector 1 Mode = Smart Clipping\n"
                                                       "Detector 2 Threshold = -3.5\n"
                                                       "Filter Set 1 Slope=48\n"
                                                       "Num Active Filters=1\n"
                                                       "Num Active Slots = 4\n"
                                                       "1. Audio Input to Output\n"
                                                       "Trigger Input to Det 1 Input (0.14655)\n"
                                                       " 3. Custom 1 to Slot 2 Level (-0)\n"
                                                       "< Source > to < Target > (1) bypassed",
                                                       "x.style");
    const std::pair<const char*, float> read[] = {
        {"Detector 1 Mode", 2.0f}, {"Detector 2 Threshold", -3.5f},  {"Filter Set 1 Slope", 3.0f},
        {"Slot 1 Level", 0.5f},    {"Slot 2 Source", 2.0f},          {"Slot 2 Level", 0.14655f},
        {"Slot 3 Level", 0.0f},    {"Slot 3 Inverted", 1.0f},        {"Slot 4 Bypassed", 1.0f},
        {"Slot 4 Source", 0.0f},   {"Num Active Main Sources", 6.0f}};
    for (const auto& [name, value] : read) EXPECT_EQ(valueOf(values, name), value) << name;
}

TEST(StyleSource, SaysWhatIsWrongWhereAndWhatWouldBeRight) {
    // Each after two lines in which nothing is wrong: one plain slot, and how many there are.
    const struct {
        const char *slots, *source, *fault;
    } cases[] = {
        {"1", "Detector 1 Moode = Peak",
         "3: unknown parameter \"Detector 1 Moode\": did you mean \"Detector 1 Mode\"?"},
        {"1", "Custom 1 = 0.1\n\nCustom 1 = 0.1", "5: Custom 1 is set twice: remove this line or line 3"},
        {"1", "Custom 1 = 1.01", "3: Custom 1 cannot be 1.01: use 0 to 1"},
        {"1", "Custom 1 = nan", "3: Custom 1 cannot be nan: use 0 to 1"},
        {"1", "Custom 1 = 0,5", "3: Custom 1 cannot be \"0,5\": use a number from 0 to 1"},
        {"1", "Num Active VCAs = 1.5", "3: Num Active VCAs cannot be 1.5: use a whole number"},
        {"1", "Num Active VCAs = 4",
         "3: Num Active VCAs cannot be 4: use at most 3, as many as a channel has"},
        {"1", "Num Active VCAs = 1\nVCA 1 Domain = db",
         "4: VCA 1 Domain cannot be \"db\": use one of \"Amplitude\", \"dB\", \"Amplitude Inverse\""},
        {"1", "Num Active VCAs = 1\nVCA 1 Num Convolvers In Gain Path = 2",
         "4: VCA 1 Num Convolvers In Gain Path cannot be 2: use at most 1"},
        {"1", "Num Active Detectors = 2\nDetector 2 Mode = Smart Clipping",
         "4: Detector 2 has no SmartClipper: use another Mode, or Detector 1"},
        {"1", "Num Active VCAs = 1\nVCA 3 Domain = dB",
         "4: VCA 3 Domain has no effect while Num Active VCAs is 1: raise it to 3"},
        {"2", "", "2: Num Active Slots is 2, but the style lists 1: set it to 1"},
        {"2", "Trigger Input to Det 1 Input",
         "3: slot 2 goes to \"Det 1 Input\", which is not active while Num Active Detectors is 0: raise it "
         "to 1"},
        {"2", "PeakHold 1 to Output",
         "3: slot 2 takes from \"PeakHold 1\", which is not active while Num Active Peak Hold Sources is 0: "
         "raise it to 1"},
        {"2", "Main Attack to Slot 3 Level",
         "3: slot 2 goes to \"Slot 3 Level\", which is not active while Num Active Slots is 2: raise it to "
         "3"},
        {"2", "Peak Hold 1 to Output", "3: unknown source \"Peak Hold 1\": did you mean \"PeakHold 1\"?"},
        {"2", "Audio Input to Zebra", "3: unknown target \"Zebra\""},
        {"2", "Audio Input to Output (0.2)",
         "3: slot 2 repeats the connection of slot 1: remove one of them"},
        {"2", "7. Trigger Input to Output", "3: slot 2 is numbered 7: number it 2, or leave the number out"},
        {"2", "Trigger Input to Output (1.5)",
         "3: slot 2 cannot have the level \"(1.5)\": use (0) to (1), with a minus to invert the slot"},
        {"2", "Trigger Input to Output (0.5",
         "3: slot 2 cannot have the level \"(0.5\": use (0) to (1), with a minus to invert the slot"},
        {"1", "Slot 1 Level = 0.3",
         "3: Slot 1 Level is set in the line of its slot: write \"Source to Target (Level)\""},
        {"1", "Audio Input",
         "3: cannot read \"Audio Input\": write \"Name = value\" or \"Source to Target (Level)\""},
        {"2", "Custom 1 to Custom 1",
         "3: slot 2 closes a loop, because Custom 1 depends on Custom 1: remove a slot of the loop"},
        {"3", "Num Active VCAs = 2\nVCA 1 to VCA 2 Gain Change\nVCA 2 to Slot 2 Level",
         "5: slot 3 closes a loop, because VCA 2 depends on Slot 2 Level: remove a slot of the loop"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(faultOf(fmt::format("Audio Input to Output\nNum Active Slots = {}\n{}", c.slots, c.source)),
                  fmt::format("x.style:{}", c.fault));
    }
    EXPECT_EQ(faultOf(""), "x.style:1: the style is silent: connect a source to Output");
}

TEST(StyleSource, RefusesTheSlotBeyondTheLast) {
    std::string source = "Num Active Slots = 80\n";
    for (int i = 1; i <= 80; ++i) {
        source += i == 1 ? "Audio Input to Output\n" : fmt::format("Main Attack to Slot {} Level\n", i - 1);
    }
    EXPECT_EQ(faultOf(source), "none");
    EXPECT_EQ(faultOf(source + "Main Release to Custom 1\n"),
              "x.style:82: a style has at most 80 slots: remove this one");
}

TEST(StyleSource, NamesEveryFaultAtOnce) {
    EXPECT_EQ(faultOf("Custom 3 = 1\nAudio Input to Outptu\n"),
              "x.style:1: unknown parameter \"Custom 3\": did you mean \"Custom 1\"?\n"
              "x.style:2: unknown target \"Outptu\": did you mean \"Output\"?\n"
              "x.style:1: Num Active Slots is 0, but the style lists 1: set it to 1");
}

TEST(StyleSource, ComesBackFromItsRecord) {
    for (const Resource& resource : styleResources()) {
        SCOPED_TRACE(resource.name);
        const std::vector<float> values = readStyleRecord(resource.bytes);
        const std::string text = writeStyleSource(limiterLayout(), values);
        const std::vector<std::byte> record =
            writeStyleRecord(parseStyleSource(limiterLayout(), text, "x.style"));
        EXPECT_TRUE(std::ranges::equal(record, resource.bytes)) << text;
    }
    std::vector<float> unusual = storedStyle("bus.limiter");
    for (const auto& [name, value] :
         {std::pair("Slot 28 Bypassed", 1.0f), {"Slot 7 Level", 1e-7f}, {"VCA 1 Look-ahead Enabled", 0.0f}}) {
        unusual[static_cast<std::size_t>(positionOf(name))] = value;
    }
    EXPECT_EQ(parseStyleSource(limiterLayout(), writeStyleSource(limiterLayout(), unusual), "x.style"),
              unusual);
    unusual[static_cast<std::size_t>(positionOf("Detector 6 Knee"))] = 3.0f;
    EXPECT_NE(writeStyleSource(limiterLayout(), unusual).find("# not active: Detector 6 Knee = 3\n"),
              std::string::npos);
}

TEST(StyleSource, IsTheFileThatTheRepositoryHolds) {
    for (const Resource& resource : styleResources()) {
        const std::string name(resource.name.substr(0, resource.name.find('.')));
        const std::string text = readBytes(std::string(VANTA_STYLE_SOURCES) + "/" + name + ".style");
        ASSERT_FALSE(text.empty()) << name;
        // Kept in the form that the writer gives it, after the words that say what the style does.
        EXPECT_EQ(text.substr(std::min(text.size(), text.find("\n\n") + 2)),
                  writeStyleSource(limiterLayout(), readStyleRecord(resource.bytes)));
    }
}

TEST(StyleRecord, RefusesWhatIsNoStyle) {
    const std::vector<float> values = limiterLayout().defaultValues();
    const std::vector<std::byte> good = writeStyleRecord(values);
    EXPECT_EQ(readStyleRecord(good), values);
    for (const std::size_t size : {std::size_t{0}, good.size() - 1}) {
        EXPECT_THROW(readStyleRecord(std::span(good).first(size)), StyleError);
    }
    for (const std::size_t offset : {0, 4, 11}) {
        std::vector<std::byte> broken = good;
        broken[offset] ^= std::byte{0x80};
        EXPECT_THROW(readStyleRecord(broken), StyleError);
    }
    EXPECT_THROW(writeStyleRecord(std::span(values).first(700)), std::invalid_argument);
}

}  // namespace
}  // namespace vanta::test
