#pragma once

#include <chrono>
#include <cstdint>
#include <list>
#include <mutex>

#include "foundation/progress.hpp"

namespace vanta {

/// Watches work for the person at the terminal, on any number of threads: shows one bar for all that is under
/// way unless `quiet`, and stops the work at Ctrl-C.
WorkWatcher terminalWatcher(bool quiet);

/// Shows how far work has come and how fast it runs, on stderr and only if that is a terminal. Any thread.
class ProgressBar {
public:
    /// A piece of work that is under way.
    struct Running {
        Work work;
        std::int64_t frames = 0;  ///< done
        std::chrono::steady_clock::time_point started;
    };
    using Place = std::list<Running>::iterator;

    explicit ProgressBar(bool wanted);

    Place begin(const Work& work);
    void show(Place place, std::int64_t frames);
    /// Wipes the bar with the last piece.
    void end(Place place);

private:
    using Clock = std::chrono::steady_clock;

    void draw(Clock::time_point now) const;

    bool visible_;
    std::mutex mutex_;
    std::list<Running> running_;
    bool drawn_ = false;
    Clock::time_point nextDraw_{};
};

}  // namespace vanta
