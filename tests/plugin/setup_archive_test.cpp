#include <gtest/gtest.h>
#include <zlib.h>

#include <span>
#include <string>

#include "plugin/presets/setup_archive.hpp"
#include "tests/plugin/preset_bytes.hpp"
#include "tests/support/temp_folder.hpp"

namespace vanta::test {
namespace {

constexpr std::int64_t kFolder = -1;

std::string header() {
    std::string bytes(53, '?');
    return bytes.replace(0, 8, "QS/ISB/3");
}

/// A record by the format's description.
std::string record(const std::string& name, std::int64_t size, std::int64_t second) {
    std::string bytes(68, '\0');
    bytes[0] = static_cast<char>(name.size());
    bytes.replace(1, std::min<std::size_t>(name.size(), 67), name.substr(0, 67));
    return bytes + Bytes().number(size).number(second).bytes;
}

std::string end() {
    return record("", 0, 0);
}

std::string zipped(const std::string& content) {
    uLongf size = compressBound(content.size());
    std::string out(size, '\0');
    compress(reinterpret_cast<Bytef*>(out.data()), &size, reinterpret_cast<const Bytef*>(content.data()),
             content.size());
    out.resize(size);
    return out;
}

std::string file(const std::string& name, const std::string& content) {
    const std::string packed = zipped(content);
    return record(name, static_cast<std::int64_t>(packed.size()), static_cast<std::int64_t>(content.size())) +
           packed;
}

std::string folder(const std::string& name, const std::string& content) {
    return record(name, static_cast<std::int64_t>(content.size() + 76), kFolder) + content + end();
}

std::string archive(const std::string& factory) {
    return header() + folder("ApplicationData", file("data", "d")) + folder("FactoryPresets", factory) +
           end();
}

bool extract(const std::string& bytes, const std::filesystem::path& target, bool overwrite = true) {
    return extractFolder(std::as_bytes(std::span(bytes)), "factorypresets", target, overwrite);
}

TEST(SetupArchive, OneFileThatFailsDoesNotKeepTheNextFromBeingWritten) {
    const std::string packed = zipped("content");
    const auto size = static_cast<std::int64_t>(packed.size());
    for (const std::string& fault :
         {record("no zlib", 3, 3) + "abc", record("short", size, 6) + packed,
          record("long", size, 8) + packed, record("cut", size - 3, 7) + packed.substr(0, packed.size() - 3),
          record("huge", size, 0x7FFFFFFF) + packed, file("../out", "x"), file("sub/bad", "x"),
          file("..", "x"), folder("..", file("out", "x"))}) {
        const TempFolder scratch;
        EXPECT_FALSE(
            extract(archive(fault + folder("_1 Sub", folder("Deep", file("good", "g")))), scratch / "in"));
        EXPECT_EQ(readBytes(scratch / "in/_1 Sub/Deep/good"), "g");
        EXPECT_EQ(scratch.names().size(), 1u);
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(scratch / "in"), {}), 1);
    }
}

TEST(SetupArchive, ArchivesOfAnotherKindAndCutOnesFail) {
    const TempFolder scratch;
    const std::string sound = archive(file("a.qmp", "one"));
    EXPECT_FALSE(extract("QS/ISB/4" + sound.substr(8), scratch / "x"));
    EXPECT_FALSE(extract(header() + folder("Other", "") + end(), scratch / "x"));
    EXPECT_FALSE(std::filesystem::exists(scratch / "x"));
    // The last record only ends the top level; one may do without what comes after it.
    for (std::size_t size = 0; size < sound.size() - 76; ++size) {
        ASSERT_FALSE(extract(sound.substr(0, size), scratch / "x")) << size;
    }
    std::string deep = end();
    for (int i = 0; i < 2000; ++i) deep = folder("d", deep);
    EXPECT_FALSE(extract(archive(deep), scratch.path)) << "deeper than any stack";
}

}  // namespace
}  // namespace vanta::test
