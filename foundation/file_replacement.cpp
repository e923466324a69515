#include "foundation/file_replacement.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <string>
#include <system_error>

namespace vanta {
namespace {

std::filesystem::path behindLinks(const std::filesystem::path& path) {
    std::error_code missing;
    std::filesystem::path real = std::filesystem::canonical(path, missing);
    return missing ? path : real;
}

std::filesystem::path nameBeside(const std::filesystem::path& path) {
    static std::atomic<unsigned> count{0};
    return path.string() + "." + std::to_string(::getpid()) + "-" + std::to_string(count++) + ".tmp";
}

/// A rename over a device node or a pipe would destroy it.
bool isReplaceable(const std::filesystem::path& path) {
    std::error_code error;
    const auto type = std::filesystem::status(path, error).type();
    return type == std::filesystem::file_type::regular || type == std::filesystem::file_type::not_found;
}

/// A rename may reach the disk before the bytes that it makes visible.
bool reachesDisk(const std::filesystem::path& path) {
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return false;
    const bool synced = ::fsync(file) == 0;
    ::close(file);
    return synced;
}

}  // namespace

FileReplacement::FileReplacement(const std::filesystem::path& path) : target_(behindLinks(path)) {
    if (isReplaceable(target_)) temporary_ = nameBeside(target_);
}

FileReplacement::~FileReplacement() {
    std::error_code gone;
    if (!temporary_.empty()) std::filesystem::remove(temporary_, gone);
}

bool FileReplacement::commit() {
    // The target may have become something else in the meantime.
    if (temporary_.empty() || !isReplaceable(target_) || !reachesDisk(temporary_)) return false;
    std::error_code error;
    const auto old = std::filesystem::status(target_, error);
    if (old.type() == std::filesystem::file_type::regular) {
        std::filesystem::permissions(temporary_, old.permissions(), error);
    }
    std::filesystem::rename(temporary_, target_, error);
    if (error) return false;
    temporary_.clear();
    return true;
}

bool replaceFile(const std::filesystem::path& path, const std::function<bool(std::ostream&)>& write) {
    FileReplacement replacement(path);
    if (replacement.temporary().empty()) return false;
    std::ofstream file(replacement.temporary(), std::ios::binary);
    if (!file || !write(file)) return false;
    file.close();
    return file && replacement.commit();
}

}  // namespace vanta
