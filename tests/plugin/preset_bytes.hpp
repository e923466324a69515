#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace vanta::test {

/// Builds the bytes of records, by the format's own description and not by the writer under test.
class Bytes {
public:
    Bytes& tag(const std::string& text) {
        bytes += text.substr(0, 4);
        return *this;
    }
    Bytes& number(std::int64_t value) {
        for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>((value >> shift) & 0xFF);
        return *this;
    }
    Bytes& real(float value) { return number(std::bit_cast<std::int32_t>(value)); }
    Bytes& reals(const std::vector<float>& values) {
        for (const float value : values) real(value);
        return *this;
    }

    std::string bytes;
};

/// A whole preset record.
inline std::string presetBytes(const std::string& tag, int version, const std::vector<float>& values) {
    return Bytes().tag(tag).number(version).number(static_cast<int>(values.size())).reals(values).bytes;
}

/// A folder for one test, gone when the test ends.
class ScratchFolder {
public:
    ScratchFolder() {
        const auto* info = testing::UnitTest::GetInstance()->current_test_info();
        path_ = std::filesystem::path(testing::TempDir()) /
                ("vanta-" + std::string(info->test_suite_name()) + "-" + info->name());
        std::filesystem::remove_all(path_);
        std::filesystem::create_directories(path_);
    }
    ~ScratchFolder() { std::filesystem::remove_all(path_); }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path file(const std::string& name) const { return path_ / name; }
    std::filesystem::path write(const std::string& name, const std::string& bytes) const {
        std::ofstream(file(name), std::ios::binary) << bytes;
        return file(name);
    }
    std::size_t fileCount() const {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(path_), std::filesystem::directory_iterator()));
    }

private:
    std::filesystem::path path_;
};

inline std::string contentOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace vanta::test
