#pragma once

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace vanta::test {

inline void writeBytes(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

inline std::string readBytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// A folder that no other test or process has, and that goes away with all that is in it.
class TempFolder {
public:
    TempFolder() {
        const std::string name = "vanta-" + std::to_string(::getpid()) + "-XXXXXX";
        std::string made = std::filesystem::temp_directory_path() / name;
        if (!::mkdtemp(made.data())) throw std::runtime_error("no temporary folder");
        path = made;
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    std::filesystem::path operator/(const std::string& name) const { return path / name; }
    /// Writes a file, and makes the folders that it needs.
    std::filesystem::path write(const std::string& name, const std::string& bytes) const {
        std::filesystem::create_directories((path / name).parent_path());
        writeBytes(path / name, bytes);
        return path / name;
    }
    /// The names in it, sorted.
    std::vector<std::string> names() const {
        std::vector<std::string> result;
        for (const auto& entry : std::filesystem::directory_iterator(path))
            result.push_back(entry.path().filename().string());
        std::ranges::sort(result);
        return result;
    }

    std::filesystem::path path;
};

}  // namespace vanta::test
