#include "dsp/convolver/input_half.hpp"

#include <algorithm>

namespace vanta {

void InputHalf::take(int phase, const float* in, int count, bool allEqual) {
    if (phase == 0) {
        setConstant(in[0]);
        constant_ = allEqual;
    } else if (constant_ && !(allEqual && in[0] == value_)) {
        writeValue(phase);
        constant_ = false;
    }
    if (!constant_) std::copy_n(in, count, samples_.data() + phase);
}

void InputHalf::setConstant(float value) {
    value_ = value;
    constant_ = true;
    written_ = false;
}

const float* InputHalf::data() {
    if (constant_ && !written_) {
        writeValue(samples_.size());
        written_ = true;
    }
    return samples_.data();
}

void InputHalf::writeValue(int count) {
    std::fill_n(samples_.data(), count, value_);
}

}  // namespace vanta
