#pragma once

#include <deque>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "limiter/engine/dynamics_processor.hpp"
#include "limiter/engine/stereo_linker.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {

/// A dynamics engine of one or two channels with nothing around it.
struct EngineRig : DynamicsEngine::StereoLinkerFactory {
    EngineRig(const DynamicsEngineConfiguration& configuration, std::vector<Signal> in)
        : channelLayout(in.size() == 1 ? kMonoLayout : kStereoLayout), layout(configuration) {
        engine.attach(*this);
        for (Signal& signal : in) {
            const int index = static_cast<int>(channels.size());
            signals.emplace_back(environment, std::move(signal));
            channels.push_back(std::make_unique<DynamicsEngine::Processor>(engine, index, signals.back()));
            ends.push_back(channels.back().get());
            if (index == 1) channels[1]->linkTo(*channels[0]);
        }
        engine.applyAllParameters();
        out.resize(channels.size());
    }
    std::unique_ptr<DynamicsEngine::AbstractStereoLinker> createStereoLinker() override {
        return std::make_unique<DefaultStereoLinker>(environment, channelLayout);
    }
    void set(int position, float value) { engine.parameterAt(position)->setValue(value, 0); }
    /// All of a style's values at once.
    void set(std::span<const float> values) {
        for (std::size_t i = 0; i < values.size(); ++i) set(static_cast<int>(i), values[i]);
    }
    /// Goes on, and adds to `out`.
    void run(const std::vector<int>& blocks) {
        {
            const RealtimeScope audio;
            engine.applyPendingParameters();
        }
        const auto more = runElements(environment, ends, blocks);
        for (std::size_t i = 0; i < out.size(); ++i)
            out[i].insert(out[i].end(), more[i].begin(), more[i].end());
    }

    ChannelLayout channelLayout;
    wave::Environment environment{256};
    EngineLayout layout;
    ModulationMatrix matrix{environment, DynamicsEngine::modulationLayout(layout)};
    DynamicsEngine engine{layout, matrix};
    std::deque<VectorSource> signals;
    std::vector<std::unique_ptr<DynamicsEngine::Processor>> channels;
    std::vector<wave::Producer*> ends;
    std::vector<Signal> out;
};

}  // namespace vanta::test
