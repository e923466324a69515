#pragma once

#include "kernel/mix.hpp"
#include "wave/producer.hpp"

namespace vanta {

/// For styles that nobody has listened to: takes what is not finite for silence, and limits magnitudes.
class SignalLimit final : public wave::Filter {
public:
    SignalLimit(wave::Environment& environment, wave::Producer& signal, float largest)
        : Filter(environment), largest_(largest) {
        source = &signal;
    }

protected:
    bool settled() const override { return true; }
    void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples, int) override {
        const auto count = static_cast<std::size_t>(samples);
        kernel::sanitize(in.data(), out->data(), count);
        kernel::clamp(out->data(), -largest_, largest_, out->data(), count);
        setConstant(source->isConstant());
    }

private:
    float largest_;
};

}  // namespace vanta
