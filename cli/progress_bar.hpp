#pragma once

#include <chrono>
#include <cstdint>

#include "foundation/progress.hpp"

namespace vanta {

/// Watches work for the person at the terminal: shows a bar unless `quiet`, and stops the work at Ctrl-C.
WorkWatcher terminalWatcher(bool quiet);

/// Shows how far work has come and how fast it runs, on stderr and only if that is a terminal.
class ProgressBar {
public:
    ProgressBar(const Work& work, bool wanted);
    /// Wipes the bar.
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void show(std::int64_t frames);

private:
    using Clock = std::chrono::steady_clock;

    void draw(std::int64_t frames, Clock::time_point now) const;

    Work work_;
    bool visible_;
    bool drawn_ = false;
    Clock::time_point started_ = Clock::now();
    Clock::time_point nextDraw_ = started_;
};

}  // namespace vanta
