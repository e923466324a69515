#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace vanta {

/// Shows on a terminal's stderr how far a render is and how fast it runs; nothing where no one watches.
class ProgressBar {
public:
    /// `sampleRate` in Hz.
    ProgressBar(std::string title, std::int64_t totalFrames, double sampleRate, bool wanted);
    /// Wipes the bar.
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void show(std::int64_t frames);

private:
    using Clock = std::chrono::steady_clock;

    void draw(std::int64_t frames, Clock::time_point now) const;

    std::string title_;
    std::int64_t total;
    double rate;
    bool visible;
    bool drawn = false;
    Clock::time_point started = Clock::now();
    Clock::time_point nextDraw = started;
};

}  // namespace vanta
