#pragma once

#include <dirent.h>

#include <memory>
#include <string>

namespace vanta {

/// Lists the entries of a folder, in the order of the file system.
class FileEnumerator {
public:
    virtual ~FileEnumerator() = default;
    /// Moves on to the next entry; false at the end.
    virtual bool next() = 0;
    /// The current entry's name, without its folder.
    virtual void name(std::string& out) const = 0;
};

/// A folder that is missing or cannot be read lists as empty.
class PosixFileEnumerator final : public FileEnumerator {
public:
    /// `pattern` is a folder path and, after its last slash, a file name in which `*` stands for any
    /// characters and `?` for one, without regard to the case of ASCII letters. Lists either directories,
    /// without "." and "..", or regular files; links count as what they lead to.
    PosixFileEnumerator(const std::string& pattern, bool directories);
    bool next() override;
    void name(std::string& out) const override { out = current_; }

private:
    struct Close {
        void operator()(DIR* folder) const { ::closedir(folder); }
    };

    bool fits(const char* name) const;

    std::string current_;
    std::string shellPattern_;
    bool directories_;
    // The iterator of the C++ library ends the process where memory runs out.
    std::unique_ptr<DIR, Close> folder_;
};

}  // namespace vanta
