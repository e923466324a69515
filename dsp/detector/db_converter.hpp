#pragma once

#include "foundation/property.hpp"
#include "wave/producer.hpp"

namespace vanta {

/// Moves a signal between amplitude and dB. "Gain change" is the amount to take away, 1 - gain. A constant
/// block is converted once. No result is infinite.
class DBConverter final : public wave::Filter {
public:
    enum Conversion : int {
        AmplitudeToDb,  ///< never below -180 dB
        DbToAmplitude,
        AmplitudeGainChangeToDb,  ///< never above 180 dB
        DbToAmplitudeGainChange
    };

    explicit DBConverter(wave::Environment& owner) : Filter(owner), conversion(nullptr, AmplitudeToDb) {}

    Property<int> conversion;  ///< a Conversion

protected:
    bool settled() const override { return true; }
    void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                 int flags) override;
};

}  // namespace vanta
