#pragma once

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>

namespace vanta {

/// A long piece of work on a stream of audio, as shown to whoever waits for it.
struct Work {
    std::string title;        ///< "rendering out.wav"
    std::int64_t frames = 0;  ///< in all
    double sampleRate = 0.0;  ///< Hz
};

/// Called repeatedly on the working thread, with the frames done so far. False stops the work.
using Progress = std::function<bool(std::int64_t frames)>;

/// Called when a piece of work begins. The Progress that it returns lives until that piece ends, however it
/// ends.
using WorkWatcher = std::function<Progress(const Work& work)>;

/// Work ended early because its Progress returned false. Nothing is left half done.
class Stopped : public std::runtime_error {
public:
    Stopped() : runtime_error("stopped") {}
};

/// Never empty: without a watcher, work runs to its end.
inline Progress watch(const WorkWatcher& watcher, const Work& work) {
    if (watcher) return watcher(work);
    return [](std::int64_t) { return true; };
}

}  // namespace vanta
