#include "host/unified/audio_side_changes.hpp"

#include <cmath>
#include <limits>

#include "foundation/numbers.hpp"

namespace vanta {

AudioSideChanges::AudioSideChanges(int parameterCount)
    : dueToModel_(parameterCount),
      dueToHost_(parameterCount),
      told_(static_cast<std::size_t>(parameterCount)) {
    for (auto& position : told_) position.store(std::numeric_limits<double>::quiet_NaN());
}

void AudioSideChanges::markForModelAndHost(int index) {
    dueToModel_.set(index);
    dueToHost_.set(index);
}

bool AudioSideChanges::isStale(int index, double position) const {
    const double told = told_[static_cast<std::size_t>(index)].load();
    return dueToModel_.test(index) && std::abs(told - position) <= static_cast<double>(kEqualWithin);
}

}  // namespace vanta
