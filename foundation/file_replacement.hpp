#pragma once

#include <filesystem>
#include <functional>
#include <iosfwd>

namespace vanta {

/// Writes a file whole or not at all: the new content goes into a file beside the old one, which takes its
/// place by a rename. Whoever looks, also after a crash, finds the old file or the new one.
class FileReplacement {
public:
    /// A symbolic link is followed: the file behind it is the one that is replaced. Only a regular file is
    /// ever replaced; for a directory, a device or a pipe there is no temporary file, and `commit` fails.
    explicit FileReplacement(const std::filesystem::path& path);
    /// Removes what was written unless it was committed.
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    /// Where to write, or empty. No other writer, in this process or another, uses this name.
    const std::filesystem::path& temporary() const { return temporary_; }
    /// Puts the written file, closed by now, in place with the old one's permissions. False if the system
    /// refuses; the old file is then unchanged.
    bool commit();

private:
    std::filesystem::path target_;
    std::filesystem::path temporary_;
};

/// Replaces a file, or makes it, with what `write` puts on the stream. False if `write` returns false or the
/// system refuses; the old file is then unchanged, as it is if `write` throws.
bool replaceFile(const std::filesystem::path& path, const std::function<bool(std::ostream&)>& write);

}  // namespace vanta
