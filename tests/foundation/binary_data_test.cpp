#include "foundation/binary_data.hpp"

#include <gtest/gtest.h>

#include <bit>

#include "foundation/resource.hpp"
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
        for (const float value : floats) writer.writeFloat(value);
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
    for (const float value : floats) {
        EXPECT_EQ(std::bit_cast<std::uint32_t>(reader.readFloat()), std::bit_cast<std::uint32_t>(value));
    }
    EXPECT_FALSE(reader.failed());
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

}  // namespace
}  // namespace vanta::test
