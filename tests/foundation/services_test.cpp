#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <set>
#include <thread>

#include "foundation/critical_section.hpp"
#include "foundation/file_enumerator.hpp"
#include "foundation/interval_timer.hpp"
#include "foundation/numbers.hpp"

namespace vanta {
namespace {

namespace fs = std::filesystem;

TEST(CriticalSection, OneThreadEntersTwiceAndTwoExclude) {
    struct Counter : LockedObject {
        Counter() : LockedObject(std::make_unique<RecursiveCriticalSection>()) {}
        int value = 0;
    } counter;
    const auto count = [&] {
        for (int i = 0; i < 20000; ++i) {
            counter.lockObject();
            counter.lockObject();
            ++counter.value;
            counter.unlockObject();
            counter.unlockObject();
        }
    };
    std::thread other(count);
    count();
    other.join();
    EXPECT_EQ(counter.value, 40000);
}

std::uint32_t fakeNow = 0;

TEST(SteadyIntervalTimer, GivesTrueDifferencesAcrossAWrap) {
    fakeNow = 0xFFFFFFF0u;
    SteadyIntervalTimer timer(+[] { return fakeNow; });
    EXPECT_EQ(timer.elapsed(), 0);
    fakeNow += 100;
    EXPECT_EQ(timer.elapsed(), 100);
    timer.reset();
    EXPECT_EQ(timer.elapsed(), 0);
    fakeNow += 5;
    EXPECT_EQ(timer.elapsed(), 5);
}

TEST(SteadyIntervalTimer, CountsMilliseconds) {
    SteadyIntervalTimer timer;
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_GE(timer.elapsed(), 29);
    EXPECT_LT(timer.elapsed(), 10000);
}

struct Folder : testing::Test {
    Folder() {
        std::string name = (fs::temp_directory_path() / "vanta[x]XXXXXX").string();
        path = mkdtemp(name.data());
        for (const char* file :
             {"a.qmp", "B.QMP", "c.qmp2", "noext", ".hidden.qmp", "gr\xC3\xBC\xC3\x9F.qmp"}) {
            std::ofstream(path / file) << 'x';
        }
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
    EXPECT_EQ(list("*.qmp", false),
              (Set{"a.qmp", "B.QMP", ".hidden.qmp", "gr\xC3\xBC\xC3\x9F.qmp", "link.qmp"}));
    EXPECT_EQ(list("*", true), (Set{"sub", "sublink", "folder.qmp"}));
    EXPECT_EQ(list("?.qmp", false), (Set{"a.qmp", "B.QMP"}));
    EXPECT_TRUE(list("*.none", false).empty());
    EXPECT_TRUE(list("missing/*", false).empty());
    EXPECT_TRUE(list("[a].qmp", false).empty()) << "brackets are plain characters";
}

TEST(Numbers, CountsLengthsFromTheDecimalNumbers) {
    EXPECT_EQ(samplesInMs(5.0, 48000.0), 240);
    EXPECT_EQ(samplesInSeconds(0.005, 48000.0), 240);
    EXPECT_EQ(samplesInMs(20.0, 44100.0), 882);
    EXPECT_EQ(samplesInMs(52.5, 48000.0), 2520);
    EXPECT_EQ(samplesInMs(0.0, 44100.0), 0);
}

TEST(Numbers, ConvertsGainsWithAFloor) {
    EXPECT_NEAR(gainFromDb(-6.0206), 0.5, 1e-6);
    EXPECT_NEAR(dbFromGain(gainFromDb(12.0)), 12.0, 1e-12);
    EXPECT_EQ(dbFromGain(0.0), -180.0);
    EXPECT_EQ(dbFromGain(1e-10), -180.0);
    EXPECT_NEAR(dbFromGain(-2.0), 6.0206, 1e-4);
}

}  // namespace
}  // namespace vanta
