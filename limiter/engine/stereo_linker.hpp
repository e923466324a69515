#pragma once

#include <memory>
#include <vector>

#include "foundation/channel_layout.hpp"
#include "foundation/property.hpp"
#include "limiter/engine/dynamics_engine.hpp"
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
/// it goes on to 1. Centre and LFE take part only where asked for. Without memory from block to block.
class DefaultStereoLinker final : public DynamicsEngine::AbstractStereoLinker {
public:
    DefaultStereoLinker(wave::Environment& environment, ChannelLayout layout);

    void setSource(int channel, wave::Producer& source) override {
        sources_[static_cast<std::size_t>(channel)] = &source;
    }

    LimitedProperty<float> amount;
    Property<bool> linkCenter;
    Property<bool> linkLfe;

protected:
    void produce(std::span<wave::BasicBlock<float>* const> blocks, int samples, int flags) override;

private:
    using Blocks = std::span<wave::BasicBlock<float>* const>;

    VANTA_REALTIME void collectCommonEnvelope(Blocks blocks, std::size_t count);
    VANTA_REALTIME void linkPair(Blocks blocks, int left, std::size_t count);
    int centerOfPair(int left) const;

    int stereo_;  ///< channels that form pairs
    int center_;
    int lfe_;
    wave::BasicBlock<float> scratch_;  ///< the common envelope above 0.5, the peak of a pair below
    std::vector<wave::Producer*> sources_;
};

}  // namespace vanta
