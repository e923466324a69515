#include "foundation/binary_data.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <bit>
#include <fstream>
#include <limits>
#include <sstream>
#include <thread>

#include "foundation/resource.hpp"

namespace vanta {
namespace {

namespace fs = std::filesystem;

struct BinaryFile : testing::Test {
    BinaryFile() {
        std::string name = (fs::temp_directory_path() / "vantaXXXXXX").string();
        folder = mkdtemp(name.data());
    }
    ~BinaryFile() override { fs::remove_all(folder); }

    fs::path put(const std::string& bytes) const {
        std::ofstream(folder / "file", std::ios::binary) << bytes;
        return folder / "file";
    }
    static std::string get(const fs::path& path) {
        std::ostringstream all;
        all << std::ifstream(path, std::ios::binary).rdbuf();
        return all.str();
    }
    fs::path folder;
};

std::span<const std::byte> bytesOf(std::string_view text) {
    return std::as_bytes(std::span(text));
}

TEST_F(BinaryFile, RecordsAreLittleEndianWords) {
    const fs::path path = folder / "new";
    BinaryFileWriter writer(path);
    writer.writeHeader("PMap", 0x01020304);
    writer.writeHeader("ab", -1);
    writer.writeHeader("longer", 0);
    writer.writeInt(-2);
    writer.writeFloat(1.0f);
    ASSERT_TRUE(writer.flush());
    const std::string expected("PMap\4\3\2\1ab\0\0\xff\xff\xff\xfflong\0\0\0\0\xfe\xff\xff\xff\0\0\x80\x3f",
                               32);
    EXPECT_EQ(get(path), expected);
}

TEST_F(BinaryFile, ReadsBackEveryBitPattern) {
    const fs::path path = folder / "new";
    const float nan = std::bit_cast<float>(0x7fc12345u);
    {
        BinaryFileWriter writer(path);
        writer.writeHeader("Vn2p", 2);
        for (const float value : {0.1f, -0.0f, 1e-42f, nan}) writer.writeFloat(value);
        writer.writeInt(std::numeric_limits<int>::min());
    }
    BinaryFileReader reader(path);
    EXPECT_EQ(reader.version(), -1);
    EXPECT_TRUE(reader.expectHeader("Vn2p"));
    EXPECT_EQ(reader.version(), 2);
    for (const float value : {0.1f, -0.0f, 1e-42f, nan}) {
        EXPECT_EQ(std::bit_cast<std::uint32_t>(reader.readFloat()), std::bit_cast<std::uint32_t>(value));
    }
    EXPECT_EQ(reader.readInt(), std::numeric_limits<int>::min());
    EXPECT_FALSE(reader.failed());
    EXPECT_EQ(reader.readInt(), 0);
    EXPECT_TRUE(reader.failed());
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
    EXPECT_TRUE(BinaryFileReader(folder).failed());
    EXPECT_TRUE(BinaryFileWriter(folder).failed());
    EXPECT_TRUE(BinaryFileWriter(folder / "none" / "file").failed());
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
    EXPECT_EQ(get(path), "PMap" + std::string(4, '\0') + "oooo" + std::string(4, '\0') + old.substr(16));
}

TEST(BinaryMemoryReader, ReadsAndSeeksWithinItsBytes) {
    BinaryMemoryReader reader(bytesOf({"Test\2\0\0\0\3\0\0\0", 12}));
    EXPECT_TRUE(reader.expectHeader("Test"));
    EXPECT_EQ(reader.readInt(), 3);
    reader.stream().seekg(-4, std::ios::end);
    EXPECT_EQ(reader.readInt(), 3);
    EXPECT_EQ(reader.stream().tellg(), 12);
    reader.stream().seekg(13);
    EXPECT_TRUE(reader.failed());
    BinaryMemoryReader empty({});
    EXPECT_FALSE(empty.expectHeader("Test"));
}

TEST(Resources, AreFoundByNameFromAnyThread) {
    static constexpr std::string_view kText("Vn2s\1\0\0\0", 8);
    static const Resource kTable[] = {{"styles/One.vst", bytesOf(kText)}, {"two.bin", {}}};
    static const Resource kLater[] = {{"two.bin", bytesOf(kText)}};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int round = 0; round < 100; ++round) {
                addResources(kTable);
                EXPECT_EQ(findResource("styles/One.vst")->size(), 8u);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    addResources(kLater);
    EXPECT_TRUE(findResource("two.bin")->empty()) << "the first of a name stays";
    EXPECT_TRUE(findResource("ONE.VST")) << "a base name counts without regard to case";
    EXPECT_FALSE(findResource("none"));
    EXPECT_TRUE(BinaryResourceReader("styles/One.vst").expectHeader("Vn2s"));
    EXPECT_TRUE(BinaryResourceReader("none").failed());
}

}  // namespace
}  // namespace vanta
