#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace vanta::gui {

/// A program that runs beside us: found on the PATH, started without a shell, with no input, and with none of
/// our files open. It ends when this goes.
class ChildProcess {
public:
    /// `environment` is what it finds changed, as "NAME=value". A program that is not there has ended with
    /// kNotStarted.
    ChildProcess(const std::vector<std::string>& arguments, const std::vector<std::string>& environment);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    static constexpr int kNotStarted = 127;
    /// Of a program that a signal has ended, or whose host has taken its status.
    static constexpr int kUnknown = -1;

    /// Reads what it has written, without waiting. Its exit status once it has ended.
    std::optional<int> poll();
    /// What it has written so far.
    const std::string& output() const { return output_; }

private:
    void start(const std::vector<std::string>& arguments, const std::vector<std::string>& environment);
    void readOutput();

    pid_t process_ = -1;
    int pipe_ = -1;
    std::string output_;
    std::optional<int> status_;
};

}  // namespace vanta::gui
