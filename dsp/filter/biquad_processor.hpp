#pragma once

#include <span>
#include <vector>

#include "dsp/filter/biquad_section.hpp"
#include "foundation/property.hpp"
#include "wave/basic_block.hpp"
#include "wave/producer.hpp"

namespace vanta {

/// Runs a cascade of second-order sections with coefficients that may change within a block, to the sample
/// and without touching the state, and fades between the filtered and the dry signal. Direct form I, in
/// double precision within a section and in single precision between two. Coefficients that race can feed
/// the state until it runs away; then the cascade starts over from silence.
class BiquadProcessor final : public wave::DynamicMaxBlockSizeListener, public wave::Component {
public:
    enum ResetMode {
        ClearState,   ///< from silence
        PreloadInput  ///< as if the input had always been the first sample, at unity gain
    };

    /// `granularity`: the fewest samples between two changes of the coefficients.
    BiquadProcessor(wave::Environment& owner, int maxSections, int granularity);
    ~BiquadProcessor() override;

    void maxBlockSizeChanged() override;

    int maxSections() const { return maxSections_; }
    int granularity() const { return granularity_; }
    int sectionCount() const { return sectionCount_; }
    /// Drops what is queued. 1 to `maxSections`.
    VANTA_REALTIME void setSectionCount(int count);

    /// The coefficients of all sections for the next `samples` samples of this block. With `amount` below 1
    /// the result is mixed with the dry signal.
    VANTA_REALTIME void queue(int samples, std::span<const BiquadCoefficients> sections, float amount = 1.0f);

    /// Filters `in` into another block `out` with the queued runs, and blends. False if the filter is
    /// inaudible: then `out` is left alone. Empties the queue.
    VANTA_REALTIME bool process(const float* in, float* out, int samples);

    /// The next block starts from a state of `resetMode`.
    VANTA_REALTIME void restart() {
        if (pending_ == Pending::None) pending_ = Pending::ByMode;
    }
    /// The next block starts from silence, and a fade has ended.
    void reset();

    /// Fades to the filtered (1) or the dry (0) signal. With 0 samples it is there at once.
    VANTA_REALTIME void fadeTo(float target, int samples);
    /// Whether silence leaves everything as it is.
    bool silent() const;
    /// Faded out: there is nothing to compute.
    bool off() const { return mix_ == 0.0f && fadeLeft_ == 0; }

    Property<ResetMode> resetMode;

private:
    struct AmountRun {
        int count;
        float amount;
    };
    enum class Pending { None, ByMode, Clear };

    void queueAmount(int samples, float amount);
    bool audible() const;
    BiquadCoefficients* runCoefficients(std::size_t run);
    void initialise(BiquadSection& section, float first) const;
    void runSection(int index, const float* in, float* out);
    bool ranAway() const;
    void startOver(float* out, int samples);
    void blend(const float* dry, float* out);
    void blendRun(const AmountRun& run, const float* dry, float* out);
    void finishBlock();

    int maxSections_;
    int granularity_;
    int sectionCount_ = 1;
    std::vector<int> counts_;                       ///< samples of each run
    std::vector<BiquadCoefficients> coefficients_;  ///< `maxSections_` places a run
    std::vector<AmountRun> amounts_;
    std::size_t capacity_ = 0;
    std::vector<BiquadSection> sections_;
    Pending pending_ = Pending::Clear;
    float mix_ = 1.0f;
    float mixTarget_ = 1.0f;
    float mixStep_ = 0.0f;
    int fadeLeft_ = 0;
};

}  // namespace vanta
