#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace vanta {

/// Stands in for what can be read or written only once, from front to back: standard input and output ("-")
/// and named pipes. What comes in goes to a file of its own first, since audio is read more than once; what
/// goes out is made in a file and sent on when it is whole.
class PipedFiles {
public:
    PipedFiles() = default;
    /// Removes the files.
    ~PipedFiles();
    PipedFiles(const PipedFiles&) = delete;
    PipedFiles& operator=(const PipedFiles&) = delete;

    /// The argument itself, or the file that now holds all that the pipe gave. Failure if it cannot be read.
    std::string input(const std::string& argument);
    /// The argument itself, or the file to write in its place.
    std::string output(const std::string& argument);
    /// Whether results for people have to go elsewhere.
    bool usesStandardOutput() const { return usesStandardOutput_; }
    /// A text in which files of ours go by the names of the pipes that they stand for.
    std::string named(std::string text) const;
    /// Sends on what was written for pipes. Failure if nobody takes it.
    void deliver();

private:
    std::string placeFor(const std::string& argument, std::string standardName);

    std::filesystem::path folder_;  ///< empty until it is needed
    std::map<std::string, std::string> outgoing_;
    std::map<std::string, std::string> names_;  ///< of files of ours, as people know them
    bool usesStandardOutput_ = false;
};

}  // namespace vanta
