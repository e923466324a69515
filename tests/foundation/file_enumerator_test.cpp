#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "foundation/file_enumerator.hpp"

namespace vanta::test {
namespace {

namespace fs = std::filesystem;

struct Folder : testing::Test {
    Folder() {
        std::string name = (fs::temp_directory_path() / "vanta[x]XXXXXX").string();
        path = mkdtemp(name.data());
        for (const char* file : {"a.qmp", "B.QMP", "c.qmp2", "noext", ".hidden.qmp", "gr\xC3\xBC.qmp"})
            std::ofstream(path / file) << 'x';
        fs::create_directory(path / "sub");
        fs::create_directory(path / "folder.qmp");
        fs::create_symlink(path / "a.qmp", path / "link.qmp");
        fs::create_symlink(path / "nowhere", path / "broken.qmp");
        fs::create_directory_symlink(path / "sub", path / "sublink");
        mkfifo((path / "pipe.qmp").c_str(), 0600);
    }
    ~Folder() override { fs::remove_all(path); }

    std::multiset<std::string> list(const std::string& pattern, bool directories) const {
        PosixFileEnumerator found((path / pattern).string(), directories);
        std::multiset<std::string> names;
        std::string name;
        while (found.next()) {
            found.name(name);
            names.insert(name);
        }
        EXPECT_FALSE(found.next()) << "the end stays the end";
        return names;
    }
    fs::path path;
};

TEST_F(Folder, ListsFilesOrDirectoriesThatFitThePattern) {
    using Set = std::multiset<std::string>;
    EXPECT_EQ(list("*.qmp", false), (Set{"a.qmp", "B.QMP", ".hidden.qmp", "gr\xC3\xBC.qmp", "link.qmp"}));
    EXPECT_EQ(list("*", true), (Set{"sub", "sublink", "folder.qmp"}));
    EXPECT_EQ(list("?.qmp", false), (Set{"a.qmp", "B.QMP"}));
    EXPECT_TRUE(list("*.none", false).empty());
    EXPECT_TRUE(list("missing/*", false).empty());
    EXPECT_TRUE(list("[a].qmp", false).empty()) << "brackets are plain characters";
}

}  // namespace
}  // namespace vanta::test
