#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <ostream>
#include <string>

#include "plugin/midi/controller_mapping.hpp"
#include "plugin/parameters/float_plugin_parameter.hpp"
#include "plugin/presets/parameter_file_list.hpp"
#include "plugin/settings/settings_store.hpp"
#include "tests/plugin/recording_owner.hpp"
#include "tests/plugin/user_home.hpp"

namespace vanta::test {
namespace {

namespace fs = std::filesystem;

/// Something that is kept in a file which must never be found half written. A whole one holds 1 or 2.
struct Kept {
    const char* name;
    const char* file;  ///< below the user's home
    std::function<bool(const fs::path&, int)> write;
    std::function<int(const fs::path&)> read;  ///< 0: it is no sound file

    friend void PrintTo(const Kept& kept, std::ostream* out) { *out << kept.name; }
};

struct OnePreset {
    OnePreset() { value.setRange(0.0f, 2.0f, 0.0f); }

    RecordingOwner owner;
    FloatPluginParameter value{owner, "Value"};
    ParameterFileList list{owner, "Test", {&value}};
};

bool writePreset(const fs::path& path, int number) {
    OnePreset preset;
    preset.value.setValue(static_cast<float>(number), 0);
    return writeFile(preset.list, path, 1);
}

int readPreset(const fs::path& path) {
    OnePreset preset;
    return loadCollection(preset.list, path, 1) ? static_cast<int>(preset.value.value()) : 0;
}

bool writeMap(const fs::path& path, int number) {
    ControllerMapping map(1);
    map.assign(number, 0);
    return map.save(path);
}

int readMap(const fs::path& path) {
    ControllerMapping map(1);
    return map.load(path) ? map.controllerOf(0) : 0;
}

bool writeSetting(const fs::path&, int number) {
    return SettingsStore("Software\\Test").write("Number", number);
}

int readSetting(const fs::path&) {
    const auto value = SettingsStore("Software\\Test").read("Number");
    return value ? std::get<std::int32_t>(*value) : 0;
}

class WholeFiles : public testing::TestWithParam<Kept> {
protected:
    WholeFiles() { fs::create_directories(path().parent_path()); }

    fs::path path() const { return home / GetParam().file; }
    bool write(int number) const { return GetParam().write(path(), number); }
    int read() const { return GetParam().read(path()); }
    /// Files beside the one that is looked at, but for the lock of the settings.
    int litter() const {
        int count = 0;
        for (const auto& entry : fs::directory_iterator(path().parent_path())) {
            count += entry.path() != path() && entry.path().extension() != ".lock";
        }
        return count;
    }

    UserHome home;
};

TEST_P(WholeFiles, AKilledWriterLeavesTheOldOneOrTheNew) {
    ASSERT_TRUE(write(1));
    for (int round = 0; round < 15; ++round) {
        const pid_t child = ::fork();
        if (child == 0) {
            for (int i = 0;; ++i) write(1 + i % 2);
        }
        ::usleep(static_cast<useconds_t>(500 + 900 * round));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        ASSERT_TRUE(read() == 1 || read() == 2) << "round " << round;
    }
    EXPECT_TRUE(write(3 - read())) << "nothing that the killed ones held keeps others out";
    EXPECT_TRUE(home.notices.empty());
}

TEST_P(WholeFiles, AFullDiskLeavesTheOldOneAlone) {
    ASSERT_TRUE(write(1));
    // A limit on the size of files fails a write just as a disk without room does.
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit tight{10, before.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &tight);
    const bool written = write(2);
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_FALSE(written);
    EXPECT_EQ(read(), 1);
    EXPECT_EQ(litter(), 0);
    EXPECT_TRUE(write(2));
}

TEST_P(WholeFiles, OnlyRegularFilesAreReplaced) {
    fs::create_directories(path() / "inside");
    EXPECT_FALSE(write(1));
    EXPECT_TRUE(fs::exists(path() / "inside"));
    fs::remove_all(path());
    ASSERT_EQ(::mkfifo(path().c_str(), 0600), 0);
    EXPECT_FALSE(write(1)) << "and does not wait for a reader";
    EXPECT_TRUE(fs::is_fifo(path()));
    EXPECT_EQ(litter(), 0);
}

TEST_P(WholeFiles, ALinkAndThePermissionsStay) {
    const auto target = home / "target";
    EXPECT_TRUE(write(1));
    fs::rename(path(), target);
    fs::create_symlink(target, path());
    fs::permissions(target, fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_TRUE(write(2));
    EXPECT_TRUE(fs::is_symlink(path()));
    EXPECT_EQ(read(), 2);
    EXPECT_EQ(fs::status(target).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

INSTANTIATE_TEST_SUITE_P(Of, WholeFiles,
                         testing::Values(Kept{"Presets", "presets/p.qmp", writePreset, readPreset},
                                         Kept{"ControllerMaps", "data/map.qmm", writeMap, readMap},
                                         Kept{"Settings", "config/Test.conf", writeSetting, readSetting}),
                         [](const auto& instance) { return instance.param.name; });

}  // namespace
}  // namespace vanta::test
