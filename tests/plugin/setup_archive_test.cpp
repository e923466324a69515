#include <gtest/gtest.h>
#include <zlib.h>

#include <span>
#include <string>

#include "plugin/presets/setup_archive.hpp"
#include "tests/plugin/mutations.hpp"
#include "tests/plugin/preset_bytes.hpp"

namespace vanta {
namespace {

using test::Bytes;
using test::contentOf;
using test::ScratchFolder;

constexpr std::int64_t kFolder = -1;

std::string header() {
    return "QS/ISB/3" + std::string(45, '?');
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

TEST(SetupArchive, AFolderComesOutAsItWentIn) {
    const ScratchFolder scratch;
    const std::string large(100'000, 'x');
    const std::string bytes =
        archive(file("a.qmp", "one") + folder("_1 Sub", folder("Deep", file("b.qmp", large))) +
                record("empty.qmp", 0, 0) + file("z.qmp", "last"));
    EXPECT_TRUE(extract(bytes, scratch.file("made/here")));
    EXPECT_EQ(contentOf(scratch.file("made/here/a.qmp")), "one");
    EXPECT_EQ(contentOf(scratch.file("made/here/_1 Sub/Deep/b.qmp")), large);
    EXPECT_EQ(std::filesystem::file_size(scratch.file("made/here/empty.qmp")), 0u);
    EXPECT_EQ(contentOf(scratch.file("made/here/z.qmp")), "last");
    EXPECT_FALSE(std::filesystem::exists(scratch.file("made/here/data")));
}

TEST(SetupArchive, AnEditedFileStaysUnlessItIsToBeOverwritten) {
    const ScratchFolder scratch;
    scratch.write("a.qmp", "mine");
    const std::string bytes = archive(file("a.qmp", "factory") + file("b.qmp", "new"));
    EXPECT_TRUE(extract(bytes, scratch.path(), false));
    EXPECT_EQ(contentOf(scratch.file("a.qmp")), "mine");
    EXPECT_EQ(contentOf(scratch.file("b.qmp")), "new");
    EXPECT_TRUE(extract(bytes, scratch.path(), true));
    EXPECT_EQ(contentOf(scratch.file("a.qmp")), "factory");
}

TEST(SetupArchive, OneFileThatFailsDoesNotKeepTheNextFromBeingWritten) {
    const std::string packed = zipped("content");
    const auto size = static_cast<std::int64_t>(packed.size());
    const std::string noZlib = record("bad", 3, 3) + "abc";
    const std::vector<std::string> faults{
        noZlib,
        record("bad", size, 6) + packed,
        record("bad", size, 8) + packed,
        record("bad", size - 3, 7) + packed.substr(0, packed.size() - 3),
        record("bad", size, 0x7FFFFFFF) + packed,
        file("../bad", "x"),
        file("sub/bad", "x"),
        file("..", "x"),
        folder("..", file("bad", "x")),
    };
    for (const std::string& fault : faults) {
        const ScratchFolder scratch;
        EXPECT_FALSE(extract(archive(fault + file("good", "g")), scratch.file("in")));
        EXPECT_EQ(contentOf(scratch.file("in/good")), "g");
        EXPECT_EQ(scratch.fileCount(), 1u);
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(scratch.file("in")), {}), 1);
    }
}

TEST(SetupArchive, ArchivesOfAnotherKindAndCutOnesFail) {
    const ScratchFolder scratch;
    const std::string sound = archive(file("a.qmp", "one"));
    EXPECT_FALSE(extract("", scratch.file("x")));
    EXPECT_FALSE(extract("QS/ISB/4" + sound.substr(8), scratch.file("x")));
    EXPECT_FALSE(extract(header() + folder("Other", "") + end(), scratch.file("x")));
    EXPECT_FALSE(std::filesystem::exists(scratch.file("x")));
    // The last record only ends the top level; one may do without what stands behind it.
    const std::size_t needed = sound.size() - 76;
    for (std::size_t size = 0; size < needed; ++size) {
        ASSERT_FALSE(extract(sound.substr(0, size), scratch.file("x"))) << size;
    }
    EXPECT_TRUE(extract(sound, scratch.file("x")));
}

TEST(SetupArchive, SizesAndDepthsThatNobodyMeansDoNoHarm) {
    const ScratchFolder scratch;
    for (const std::int64_t size : {std::int64_t{0x7FFFFFFF}, std::int64_t{-1}, std::int64_t{-0x7FFFFFFF}}) {
        EXPECT_FALSE(extract(archive(record("a", size, 10)), scratch.path()));
        EXPECT_FALSE(extract(archive(record("a", size, kFolder)), scratch.path()));
    }
    EXPECT_FALSE(extract(archive(record("a", 0, -2)), scratch.path()));
    std::string deep = end();
    for (int i = 0; i < 2000; ++i)
        deep = record("d", static_cast<std::int64_t>(deep.size()), kFolder) + deep + end();
    EXPECT_FALSE(extract(archive(deep), scratch.path()));
}

TEST(SetupArchive, DamageNeverLeadsOutOfTheFolder) {
    const ScratchFolder scratch;
    const std::string sound = archive(file("a.qmp", std::string(136, 'q')) +
                                      folder("_1 Sub", file("b.qmp", "two")) + file("c", "three"));
    test::forMutations(sound, 400, [&](const std::string& damaged) {
        extract(damaged, scratch.file("in"));
        std::filesystem::remove_all(scratch.file("in"));
        ASSERT_EQ(scratch.fileCount(), 0u);
    });
}

}  // namespace
}  // namespace vanta
