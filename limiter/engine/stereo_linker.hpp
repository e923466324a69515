#pragma once

#include <memory>
#include <vector>

#include "foundation/channel_layout.hpp"
#include "foundation/property.hpp"
#include "limiter/engine/dynamics_engine.hpp"
#include "wave/float_parameter.hpp"
#include "wave/multi_producer.hpp"

namespace vanta {

/// Shares the levels of one Detector among the channels of a layout. Output c is what channel c detects.
class DynamicsEngine::AbstractStereoLinker : public wave::MultiProducer {
public:
    using MultiProducer::MultiProducer;
    /// Set-up: the signal whose magnitude channel `channel` contributes.
    virtual void setSource(int channel, wave::Producer& source) = 0;
};

class DynamicsEngine::StereoLinkerFactory {
public:
    virtual ~StereoLinkerFactory() = default;
    /// Called once per built Detector, in order.
    virtual std::unique_ptr<AbstractStereoLinker> createStereoLinker() = 0;
};

/// Links left and right of each pair while `amount` goes from 0 to 0.5, and all pairs with each other while
/// it goes on to 1. Centre and LFE take part only where asked for. Amount and switches glide. Without memory
/// of the signal from block to block.
class DefaultStereoLinker final : public DynamicsEngine::AbstractStereoLinker, public PropertyOwner {
public:
    DefaultStereoLinker(wave::Environment& environment, ChannelLayout layout);

    void setSource(int channel, wave::Producer& source) override {
        sources_[static_cast<std::size_t>(channel)] = &source;
    }

    wave::FloatParameter amount;  ///< 0 to 1
    Property<bool> linkCenter;
    Property<bool> linkLfe;

protected:
    bool settled() const override { return true; }
    void produce(std::span<wave::BasicBlock<float>* const> blocks, int samples, int flags) override;
    void propertyChanged(AbstractProperty& property) override;

private:
    using Blocks = std::span<wave::BasicBlock<float>* const>;
    /// Amount and the shares of centre and LFE for a block. At rest the first value counts.
    struct Controls {
        const float* amount;
        const float* center;
        const float* lfe;
    };

    VANTA_REALTIME void link(Blocks blocks, const Controls& controls, std::size_t count);
    VANTA_REALTIME void glide(Blocks blocks, const Controls& controls, int samples);
    VANTA_REALTIME void collectCommonEnvelope(Blocks blocks, const Controls& controls, std::size_t count);
    VANTA_REALTIME void linkPair(Blocks blocks, int left, const Controls& controls, std::size_t count);
    /// -1 for none.
    int centerOfPair(int left) const;

    int stereo_;  ///< channels that form pairs
    int center_;
    int lfe_;
    wave::FloatParameter centerShare_;
    wave::FloatParameter lfeShare_;
    wave::BasicBlock<float> scratch_;  ///< the common envelope above 0.5, the peak of a pair below
    std::vector<wave::Producer*> sources_;
};

}  // namespace vanta
