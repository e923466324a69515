#pragma once

#include <cstdint>

#include "foundation/realtime.hpp"
#include "wave/producer.hpp"

namespace vanta::wave {

/// Notices when blocks were missed: nobody pulled in the meantime, and what a node remembers does not belong
/// to the stream that comes.
class StreamWatch {
public:
    /// Whether the block that begins now follows the last one. Once a block.
    VANTA_REALTIME bool follows(const Environment& environment, int samples) {
        const bool followed = environment.position() == expected_;
        expected_ = environment.position() + samples;
        return followed;
    }
    /// The same for a node that may settle: a rest is no gap.
    VANTA_REALTIME bool follows(const Producer& node, int samples) {
        const bool followed = expected_ >= 0 && node.continues(expected_);
        expected_ = node.environment().position() + samples;
        return followed;
    }
    /// The next block follows nothing.
    void forget() { expected_ = -1; }

private:
    std::int64_t expected_ = 0;
};

}  // namespace vanta::wave
