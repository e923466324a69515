#include "foundation/setting_serializer.hpp"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>
#include <map>

namespace vanta::test {
namespace {

using Texts = std::map<std::string, std::string>;

/// Keeps everything as text, as a store without types of its own does.
struct TextStore : SettingSerializer {
    TextStore(Texts& storedTexts, bool writing) : texts(storedTexts), writes(writing) {}
    bool isWriter() const override { return writes; }
    std::string text(const std::string& key, const std::string& value, const std::string& fallback) override {
        if (writes) return texts[key] = value;
        return texts.contains(key) ? texts.at(key) : fallback;
    }
    Texts& texts;
    bool writes;
};

struct Settings {
    Settings& through(SettingSerializer&& store) {
        on = store.boolean("On", on, false);
        size = store.integer("Size", size, 7);
        scale = store.real("Scale", scale, 1.0 / 3.0);
        name = store.text("Name", name, "none");
        store.binary("Blob", blob);
        return *this;
    }
    bool operator==(const Settings&) const = default;
    bool on;
    int size;
    double scale;
    std::string name;
    std::vector<std::uint8_t> blob;
};

TEST(SettingSerializer, OneRoutineServesBothDirections) {
    const Settings saved{true, std::numeric_limits<int>::min(), -0.001, "Größe", {0, 255, 16}};
    Texts texts, nothing;
    EXPECT_EQ(Settings(saved).through(TextStore(texts, true)), saved) << "a writer gives back the value";
    EXPECT_EQ(Settings{}.through(TextStore(texts, false)), saved);
    EXPECT_EQ(Settings(saved).through(TextStore(nothing, false)),
              (Settings{false, 7, 1.0 / 3.0, "none", {}}));
}

TEST(SettingSerializer, ReadsEditedTextAndRefusesNonsense) {
    Texts store{{"spaced", "  +12 "},    {"tail", "12abc"},     {"word", "abc"}, {"empty", ""},
                {"wide", "99999999999"}, {"real", " -1.5e3dB"}, {"odd", "abc"},  {"bad", "0g"}};
    TextStore reader(store, false);
    EXPECT_EQ(reader.integer("spaced", 0, -1), 12);
    EXPECT_EQ(reader.integer("tail", 0, -1), 12);
    for (const char* key : {"word", "empty", "wide"}) EXPECT_EQ(reader.integer(key, 0, -1), -1) << key;
    EXPECT_EQ(reader.real("real", 0, 1), -1500.0);
    EXPECT_EQ(reader.real("word", 0, 2.5), 2.5);
    for (const char* key : {"odd", "bad"}) {
        std::vector<std::uint8_t> bytes{1};
        reader.binary(key, bytes);
        EXPECT_TRUE(bytes.empty()) << key;
    }
}

TEST(SettingSerializer, WritesTheSameTextInEveryLocale) {
    // Where the machine has a locale with a decimal comma, it must make no difference.
    const std::string before = std::setlocale(LC_ALL, nullptr);
    for (const char* name : {"de_DE.UTF-8", "fr_FR.UTF-8"}) {
        if (std::setlocale(LC_ALL, name)) break;
    }
    Texts texts;
    TextStore(texts, true).real("Key", 1234567.25, 0);
    EXPECT_EQ(texts["Key"], "1234567.25");
    EXPECT_EQ(TextStore(texts, false).real("Key", 0, 0), 1234567.25);
    std::setlocale(LC_ALL, before.c_str());
}

}  // namespace
}  // namespace vanta::test
