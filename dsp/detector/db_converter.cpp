#include "dsp/detector/db_converter.hpp"

#include <algorithm>
#include <array>

#include "foundation/numbers.hpp"
#include "kernel/level_math.hpp"
#include "kernel/mix.hpp"

namespace vanta {

namespace {

struct Form {
    const kernel::UnaryKernel* block;
    double (*value)(double x);
};

constexpr std::array<Form, 4> kForms = {{
    {&kernel::decibelsFromAmplitude, dbFromGain},
    {&kernel::amplitudeFromDecibels, [](double x) { return kernel::limitedExp(x * kDbToLog); }},
    {&kernel::decibelsFromReduction, [](double x) { return -dbFromGain(1.0 - x); }},
    {&kernel::reductionFromDecibels, [](double x) { return 1.0 - kernel::limitedExp(-x * kDbToLog); }},
}};

}  // namespace

void DBConverter::process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples, int) {
    const auto count = static_cast<std::size_t>(samples);
    const int index = std::clamp<int>(conversion, 0, static_cast<int>(kForms.size()) - 1);
    const Form& form = kForms[static_cast<std::size_t>(index)];
    if (source->isConstant()) {
        kernel::fill(static_cast<float>(form.value(in[0])), out->data(), count);
        setConstant(true);
    } else {
        (*form.block)(in.data(), out->data(), count);
    }
}

}  // namespace vanta
