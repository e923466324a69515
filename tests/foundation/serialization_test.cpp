#include "foundation/binary_data.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <clocale>
#include <cmath>
#include <limits>
#include <map>

#include "foundation/resource.hpp"
#include "foundation/setting_serializer.hpp"
#include "tests/support/temp_folder.hpp"

namespace vanta::test {
namespace {

namespace fs = std::filesystem;

struct BinaryFile : testing::Test {
    fs::path put(const std::string& bytes) const { return folder.write("file", bytes); }
    TempFolder folder;
};

std::span<const std::byte> bytesOf(std::string_view text) {
    return std::as_bytes(std::span(text));
}

TEST_F(BinaryFile, RecordsAreLittleEndianWordsAndComeBackBitForBit) {
    const fs::path path = folder / "new";
    const float floats[] = {1.0f, 0.1f, -0.0f, 1e-42f, std::bit_cast<float>(0x7fc12345u)};
    {
        BinaryFileWriter writer(path);
        writer.writeHeader("PMap", 0x01020304);
        writer.writeHeader("ab", -1);
        writer.writeHeader("longer", 0);
        writer.writeInt(-2);
        writer.writeFloat(floats[0]);
        writer.writeFloats(std::span(floats).subspan(1));
        ASSERT_TRUE(writer.flush());
    }
    const std::string expected("PMap\4\3\2\1ab\0\0\xff\xff\xff\xfflong\0\0\0\0\xfe\xff\xff\xff\0\0\x80\x3f",
                               32);
    EXPECT_EQ(readBytes(path).substr(0, 32), expected);
    BinaryFileReader reader(path);
    EXPECT_EQ(reader.version(), -1);
    EXPECT_TRUE(reader.expectHeader("PMap"));
    EXPECT_EQ(reader.version(), 0x01020304);
    for (int i = 0; i < 2; ++i) reader.readHeader();
    EXPECT_EQ(reader.readInt(), -2);
    float read[] = {0.0f, 0.0f, 0.0f, 0.0f, 1.0f, 1.0f};
    reader.readFloats(std::span(read).first(4));
    EXPECT_FALSE(reader.failed());
    reader.readFloats(std::span(read).subspan(4));
    EXPECT_TRUE(reader.failed()) << "one more than there is";
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(std::bit_cast<std::uint32_t>(read[i]), std::bit_cast<std::uint32_t>(floats[i]));
    }
    EXPECT_EQ(read[5], 0.0f);
}

TEST_F(BinaryFile, CutFilesFailForGoodAndReadAsZero) {
    const std::string whole("PMap\1\0\0\0\7\0\0\0", 12);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        BinaryFileReader reader(put(whole.substr(0, length)));
        EXPECT_EQ(reader.expectHeader("PMap"), length >= 8) << length;
        EXPECT_EQ(reader.version(), length >= 8 ? 1 : -1);
        EXPECT_EQ(reader.readInt(), 0);
        EXPECT_EQ(reader.readFloat(), 0.0f);
        EXPECT_TRUE(reader.failed());
        EXPECT_EQ(reader.readHeader(), "");
    }
    BinaryFileReader reader(put(whole));
    EXPECT_FALSE(reader.expectHeader("PMax"));
    EXPECT_FALSE(reader.failed()) << "another tag is no failure of the stream";
    EXPECT_EQ(reader.readInt(), 7);
}

TEST_F(BinaryFile, MissingFilesAndFoldersFailWithoutThrowing) {
    EXPECT_TRUE(BinaryFileReader(folder / "none").failed());
    EXPECT_TRUE(BinaryFileReader(folder.path).failed());
    EXPECT_TRUE(BinaryFileWriter(folder.path).failed());
    EXPECT_TRUE(BinaryFileWriter(folder / "none/file").failed());
    ASSERT_TRUE(fs::is_character_file("/dev/full"));
    BinaryFileWriter full("/dev/full");
    full.writeInt(1);
    EXPECT_FALSE(full.flush());
}

TEST_F(BinaryFile, UpdatesInPlaceAndLeavesTheOldTail) {
    const std::string old(100, 'o');
    const fs::path path = put(old);
    BinaryFileWriter writer(path);
    auto* input = dynamic_cast<std::istream*>(&writer.stream());
    ASSERT_NE(input, nullptr);
    EXPECT_EQ(BinaryDataReader(*input).readHeader(), "oooo");
    writer.stream().seekp(0);
    writer.writeHeader("PMap", 0);
    writer.skip();
    writer.writeInt(0);
    ASSERT_TRUE(writer.flush());
    EXPECT_EQ(readBytes(path),
              "PMap" + std::string(4, '\0') + "oooo" + std::string(4, '\0') + old.substr(16));
}

TEST(Resources, AreFoundByName) {
    static constexpr std::string_view kText("Vn2s\1\0\0\0", 8);
    static const Resource kTable[] = {{"styles/One.vst", bytesOf(kText)}, {"two.bin", {}}};
    static const Resource kLater[] = {{"two.bin", bytesOf(kText)}};
    addResources(kTable);
    addResources(kLater);
    EXPECT_TRUE(findResource("two.bin")->empty()) << "the first of a name stays";
    EXPECT_TRUE(findResource("ONE.VST")) << "a base name counts without regard to case";
    EXPECT_FALSE(findResource("none"));
    EXPECT_TRUE(BinaryResourceReader("styles/One.vst").expectHeader("Vn2s"));
    EXPECT_TRUE(BinaryResourceReader("none").failed());
}

// --- SettingSerializer ---

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
