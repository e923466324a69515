#include "dsp/convolver/kernel_version.hpp"

namespace vanta {

KernelVersion::KernelVersion(const ConvolverPlan& plan) : taps(plan.coveredLength()) {
    int floats = 0;
    for (const ConvolverPlan* node = &plan; node; node = node->next()) {
        stages_.push_back({floats, node->fftSize()});
        floats += node->partitionCount() * node->fftSize();
    }
    bins_.resize(floats);
}

}  // namespace vanta
