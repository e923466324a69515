#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace vanta::test {

/// A program by the name of zenity, first on the PATH, that answers as it is told and writes down what it was
/// asked. There is no session bus meanwhile.
class FakeZenity {
public:
    FakeZenity();
    ~FakeZenity();
    FakeZenity(const FakeZenity&) = delete;
    FakeZenity& operator=(const FakeZenity&) = delete;

    /// One dialog, the next if none is open; until then each stays open.
    void answer(int status, const std::string& output = {}) const;
    /// Takes it off the PATH, and whatever else is there.
    void hide() const;

    /// Of the last dialog, without the program's name; empty for none so far.
    std::vector<std::string> arguments() const;
    bool wasAsked(const std::string& argument) const;
    /// The last dialog has not been answered or closed.
    bool isOpen() const;

private:
    std::filesystem::path folder_;
    std::string path_;                ///< the environment's, to be restored
    std::optional<std::string> bus_;  ///< the same
};

}  // namespace vanta::test
