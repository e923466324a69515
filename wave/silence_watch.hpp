#pragma once

#include <cstdint>

#include "wave/producer.hpp"

namespace vanta::wave {

/// Follows for how long a signal has been silent: what remembers a limited stretch of it need not compute
/// when nothing else is left in there.
class SilenceWatch {
public:
    /// Takes in a block of a source. Whether it and the `memory` samples before it are silent, so that
    /// nothing else can come out.
    VANTA_REALTIME bool outlasts(const Producer& source, int samples, int memory) {
        const bool silent = source.holdsOneValue() && source.current()[0] == 0.0f;
        outlasting_ = silent && samples_ >= memory;
        samples_ = silent ? samples_ + samples : 0;
        return outlasting_;
    }
    /// What the newest block was found to be.
    bool outlasting() const { return outlasting_; }
    /// The memory is filled with something else.
    void restart() {
        samples_ = 0;
        outlasting_ = false;
    }

private:
    std::int64_t samples_ = 0;
    bool outlasting_ = false;
};

}  // namespace vanta::wave
