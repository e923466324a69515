#include "tests/host/windows/paced_audio.hpp"

#include <sys/resource.h>

#include <chrono>

#include "foundation/realtime.hpp"
#include "tests/support/realtime_trap.hpp"

namespace vanta::test {
namespace {

constexpr int kAudioNice = -19;

rusage usageOfThread() {
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    return usage;
}

}  // namespace

void startThread(FormatHost& host) {
    float nothing = 0.0f;
    const float* const inputs[] = {&nothing, &nothing};
    float* const outputs[] = {&nothing, &nothing};
    host.process({inputs, {}, outputs, 0, {}, {}});
}

void processCounted(FormatHost& host, const FormatHost::Block& block, BlockCounts& counts) {
    const rusage before = usageOfThread();
    {
        const RealtimeScope realtime;
        host.process(block);
    }
    const rusage after = usageOfThread();
    ++counts.blocks;
    // A page that has to be found, as code is on its first run, waits for the kernel's own locks.
    const bool hasFaulted = after.ru_minflt != before.ru_minflt || after.ru_majflt != before.ru_majflt;
    if (!hasFaulted) counts.waits += static_cast<int>(after.ru_nvcsw - before.ru_nvcsw);
}

PacedAudio::PacedAudio(FormatHost& host, int rate, int blockSize)
    : thread_([this, &host, rate, blockSize] { run(host, rate, blockSize); }) {}

BlockCounts PacedAudio::stop() {
    done_ = true;
    if (thread_.joinable()) thread_.join();
    return counts_;
}

void PacedAudio::run(FormatHost& host, int rate, int blockSize) {
    using Clock = std::chrono::steady_clock;
    using namespace std::chrono_literals;
    const RealtimeTrap::ThreadWatch watch;
    // Not in real time: where this host takes turns with its audio thread, a turn would wait for a core for
    // long.
    // A sanitizer needs more than all of a block's time, and would leave none to others.
    if (RealtimeTrap::catches(RealtimeTrap::Kind::Lock)) setpriority(PRIO_PROCESS, 0, kAudioNice);
    const auto period = std::chrono::nanoseconds(std::chrono::seconds(1)) * blockSize / rate;
    const Channels input = programme(2, static_cast<std::size_t>(blockSize));
    Channels output = input;
    const float* const inputs[] = {input[0].data(), input[1].data()};
    float* const outputs[] = {output[0].data(), output[1].data()};
    startThread(host);
    const long first = usageOfThread().ru_nvcsw;
    auto due = Clock::now();
    while (!done_) {
        due += period;
        processCounted(host, {inputs, {}, outputs, blockSize, {}, {}}, counts_);
        if (const auto now = Clock::now(); now > due) {
            ++counts_.late;
            due = now + 1ms;
        }
        std::this_thread::sleep_until(due);
    }
    counts_.rests = static_cast<int>(usageOfThread().ru_nvcsw - first) - counts_.waits;
}

}  // namespace vanta::test
