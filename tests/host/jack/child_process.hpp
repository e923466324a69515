#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace vanta::test {

/// Whether something comes true in time, looked at every other millisecond.
inline bool within(std::chrono::milliseconds limit, const std::function<bool()>& isTrue) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!isTrue()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

/// Another program, which does not outlive this object or this process.
class ChildProcess {
public:
    /// All that it prints goes to `output`.
    ChildProcess(const std::vector<std::string>& commandLine, std::filesystem::path output);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    void signal(int number) const;
    /// The exit code once it has ended; -1 if it was ended by a signal, -2 if it still runs after 20 s.
    int wait();
    bool isRunning();
    std::string printed() const;

private:
    std::filesystem::path output_;
    pid_t pid_;
    int status_ = 0;
    bool hasEnded_ = false;
};

}  // namespace vanta::test
