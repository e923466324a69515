#include "wave/float_parameter_source.hpp"

namespace vanta::wave {

void FloatParameterForwarder::produce(BasicBlock<float>*, int samples, int) {
    bool constant = false;
    const auto& block = parameter_.readInStream(samples, &constant);
    publish(block, constant ? kConstant : 0);
}

void FloatParameterSource::produce(BasicBlock<float>*, int samples, int) {
    bool constant = false;
    const auto& block = parameter_.readInStream(samples, &constant);
    publish(block, constant ? kConstant : 0);
}

}  // namespace vanta::wave
