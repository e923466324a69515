#include "foundation/file_enumerator.hpp"

#include <fnmatch.h>

#include <system_error>
#include <utility>

namespace vanta {
namespace {

/// Takes the meaning from all but the two wildcards.
std::string toShellPattern(const std::string& wildcard) {
    std::string shell;
    for (const char c : wildcard) {
        if (c == '[' || c == ']' || c == '\\') shell += '\\';
        shell += c;
    }
    return shell;
}

std::string folderOf(const std::string& pattern) {
    const std::size_t slash = pattern.rfind('/');
    return slash == std::string::npos ? "./" : pattern.substr(0, slash + 1);
}

std::string wildcardOf(const std::string& pattern) {
    const std::size_t slash = pattern.rfind('/');
    return slash == std::string::npos ? pattern : pattern.substr(slash + 1);
}

}  // namespace

PosixFileEnumerator::PosixFileEnumerator(std::string searchPattern, bool listDirectories)
    : pattern(std::move(searchPattern)), directories(listDirectories) {}

bool PosixFileEnumerator::next() {
    std::error_code failed;
    if (!started) {
        started = true;
        search = std::filesystem::directory_iterator(folderOf(pattern), failed);
    } else if (search != std::filesystem::directory_iterator{}) {
        search.increment(failed);
    }
    while (!failed && search != std::filesystem::directory_iterator{}) {
        if (fits(*search)) {
            current = search->path().filename().string();
            return true;
        }
        search.increment(failed);
    }
    search = {};
    return false;
}

bool PosixFileEnumerator::fits(const std::filesystem::directory_entry& entry) const {
    std::error_code ignored;
    const bool wanted = directories ? entry.is_directory(ignored) : entry.is_regular_file(ignored);
    const std::string shell = toShellPattern(wildcardOf(pattern));
    return wanted && fnmatch(shell.c_str(), entry.path().filename().c_str(), FNM_CASEFOLD) == 0;
}

}  // namespace vanta
