#pragma once

#include <atomic>
#include <thread>

#include "tests/host/formats/performance.hpp"

namespace vanta::test {

/// What blocks have cost the thread that processed them.
struct BlockCounts {
    int blocks = 0;
    int late = 0;  ///< not there when the sound card wanted them, be it for the load of the machine
    int waits =
        0;  ///< times that the thread gave its core away within a block, as whoever waits for a lock does
    int rests = 0;  ///< the same between blocks, which shows that the kernel counts
};

/// The loader makes room for a thread's own data of a module when that is first used there. A block of
/// nothing, as hosts have it done when they start.
void startThread(FormatHost& host);

/// Has the calling thread, as an audio thread, process a block. What it does there that audio threads do not
/// do is caught by a RealtimeTrap, if there is one.
void processCounted(FormatHost& host, const FormatHost::Block& block, BlockCounts& counts);

/// Stereo blocks of a programme on a thread of its own, at the pace of a sound card with two buffers: each is
/// due when the next begins. What is late is heard, and the card goes on from there. Where the system lets
/// it, the thread comes before others, as audio threads do.
class PacedAudio {
public:
    PacedAudio(FormatHost& host, int rate, int blockSize);
    ~PacedAudio() { stop(); }
    BlockCounts stop();

private:
    void run(FormatHost& host, int rate, int blockSize);

    BlockCounts counts_;
    std::atomic<bool> done_{false};
    std::thread thread_;
};

}  // namespace vanta::test
