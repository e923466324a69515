#include "host/unified/audio_side_changes.hpp"

#include <algorithm>
#include <cmath>

#include "foundation/numbers.hpp"

namespace vanta {

bool AudioSideChanges::isAnyWaiting() const {
    return std::ranges::any_of(parameters_, [](const Parameter& each) { return each.marks.load() != 0; });
}

void AudioSideChanges::forget() {
    // Not what the host was told: its answer may still be on the way, and is as old.
    for (Parameter& parameter : parameters_) parameter.marks.fetch_and(kTaken);
}

bool AudioSideChanges::isAnswer(int index, double position) {
    Parameter& parameter = at(index);
    double told = parameter.told.load();
    if (std::abs(told - position) <= static_cast<double>(kEqualWithin)) {
        // A host that set it on its own is told what is newer.
        if (parameter.marks.load() & kForModel) markForModelAndHost(index);
        return true;
    }
    // Unless it has just been told something else.
    parameter.told.compare_exchange_strong(told, kNothing);
    return false;
}

}  // namespace vanta
