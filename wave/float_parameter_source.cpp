#include "wave/float_parameter_source.hpp"

namespace vanta {

void FloatParameterForwarder::produce(wave::BasicBlock<float>*, int samples, int) {
    bool constant = false;
    const auto& block = parameter_.readInStream(samples, &constant);
    publish(block, constant ? kConstant : 0);
}

void FloatParameterSource::produce(wave::BasicBlock<float>*, int samples, int) {
    bool constant = false;
    const auto& block = parameter_.readInStream(samples, &constant);
    publish(block, constant ? kConstant : 0);
}

}  // namespace vanta
