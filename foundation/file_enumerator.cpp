#include "foundation/file_enumerator.hpp"

#include <fnmatch.h>
#include <sys/stat.h>

#include <cstring>

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

PosixFileEnumerator::PosixFileEnumerator(const std::string& pattern, bool directories)
    : shellPattern_(toShellPattern(wildcardOf(pattern))),
      directories_(directories),
      folder_(::opendir(folderOf(pattern).c_str())) {}

bool PosixFileEnumerator::next() {
    while (const dirent* entry = folder_ ? ::readdir(folder_.get()) : nullptr) {
        if (!fits(entry->d_name)) continue;
        current_ = entry->d_name;
        return true;
    }
    folder_.reset();
    return false;
}

bool PosixFileEnumerator::fits(const char* name) const {
    if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0) return false;
    if (::fnmatch(shellPattern_.c_str(), name, FNM_CASEFOLD) != 0) return false;
    struct stat status {};
    if (::fstatat(::dirfd(folder_.get()), name, &status, 0) != 0) return false;
    return directories_ ? S_ISDIR(status.st_mode) : S_ISREG(status.st_mode);
}

}  // namespace vanta
