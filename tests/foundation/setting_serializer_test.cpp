#include "foundation/setting_serializer.hpp"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>
#include <map>

namespace vanta {
namespace {

using Store = std::map<std::string, std::string>;

struct TextWriter : SettingSerializer {
    explicit TextWriter(Store& target) : store(target) {}
    bool isWriter() const override { return true; }
    std::string text(const std::string& key, const std::string& value, const std::string&) override {
        return store[key] = value;
    }
    Store& store;
};

struct TextReader : SettingSerializer {
    explicit TextReader(const Store& source) : store(source) {}
    bool isWriter() const override { return false; }
    std::string text(const std::string& key, const std::string&, const std::string& fallback) override {
        const auto found = store.find(key);
        return found == store.end() ? fallback : found->second;
    }
    const Store& store;
};

TEST(SettingSerializer, OneRoutineServesBothDirections) {
    struct Settings {
        void serialise(SettingSerializer& serializer) {
            on = serializer.boolean("On", on, on);
            size = serializer.integer("Size", size, size);
            scale = serializer.real("Scale", scale, scale);
            name = serializer.text("Name", name, name);
            serializer.binary("Blob", blob);
        }
        bool on = false;
        int size = 1;
        double scale = 1.0;
        std::string name = "none";
        std::vector<std::uint8_t> blob;
    };
    Store store;
    TextWriter writer(store);
    Settings saved{true, std::numeric_limits<int>::min(), -0.001, "Größe", {0, 255, 16}};
    saved.serialise(writer);
    EXPECT_TRUE(saved.on);
    Settings loaded;
    TextReader reader(store);
    loaded.serialise(reader);
    EXPECT_TRUE(loaded.on);
    EXPECT_EQ(loaded.size, saved.size);
    EXPECT_EQ(loaded.scale, saved.scale);
    EXPECT_EQ(loaded.name, saved.name);
    EXPECT_EQ(loaded.blob, saved.blob);
    EXPECT_EQ(store["On"], "1");
}

TEST(SettingSerializer, AReaderGivesTheDefaultAWriterTheValue) {
    Store store;
    EXPECT_EQ(TextReader(store).integer("Key", 5, 7), 7);
    EXPECT_EQ(TextReader(store).real("Key", 5, 1.0 / 3.0), 1.0 / 3.0);
    EXPECT_EQ(TextWriter(store).integer("Key", 5, 7), 5);
    EXPECT_EQ(store["Key"], "5");
    EXPECT_EQ(TextWriter(store).real("Third", 1.0 / 3.0, 0), 1.0 / 3.0);
    EXPECT_EQ(store["Third"], "0.333333333333333");
    std::vector<std::uint8_t> bytes{1};
    TextReader(store).binary("None", bytes);
    EXPECT_TRUE(bytes.empty());
}

TEST(SettingSerializer, ReadsEditedTextAndRefusesNonsense) {
    Store store{{"spaced", "  +12 "},    {"tail", "12abc"},     {"word", "abc"}, {"empty", ""},
                {"wide", "99999999999"}, {"real", " -1.5e3dB"}, {"odd", "abc"},  {"bad", "0g"}};
    TextReader reader(store);
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
    Store store;
    TextWriter(store).real("Key", 1234567.25, 0);
    EXPECT_EQ(store["Key"], "1234567.25");
    EXPECT_EQ(TextReader(store).real("Key", 0, 0), 1234567.25);
    std::setlocale(LC_ALL, before.c_str());
}

}  // namespace
}  // namespace vanta
