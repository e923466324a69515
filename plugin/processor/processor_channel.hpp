#pragma once

#include "plugin/processor/generic_plugin_processor.hpp"
#include "wave/producer.hpp"

namespace vanta {

/// One channel: its inputs, and the end of the graph that the subclass builds on them.
class GenericPluginProcessor::Channel {
public:
    /// Appends itself to the processor's channels.
    explicit Channel(GenericPluginProcessor& owner);
    virtual ~Channel() = default;
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;

    VANTA_REALTIME virtual void parameterApplied(int /*index*/) {}
    virtual void sampleRateChanged() {}

    int index() const { return index_; }
    int typeWord() const { return typeWord_; }
    wave::Input& mainInput() { return mainInput_; }
    /// The delivered side chain, or where there is none the main signal.
    wave::Input& sideInput() { return sideInput_; }
    /// The delivered side chain, or silence.
    wave::Producer& connectedSideChain() { return connectedSideChain_; }

    wave::Producer* output = nullptr;

protected:
    GenericPluginProcessor& processor;

private:
    class ConnectedSideChainInput final : public wave::Input {
    public:
        ConnectedSideChainInput(wave::Environment& owner, const GenericPluginProcessor& frame)
            : Input(owner), processor_(frame) {}

    protected:
        void produce(wave::BasicBlock<float>* block, int samples, int flags) override;

    private:
        const GenericPluginProcessor& processor_;
    };

    friend class GenericPluginProcessor;
    int index_;
    int typeWord_;
    wave::Input mainInput_;
    wave::Input sideInput_;
    ConnectedSideChainInput connectedSideChain_;
};

}  // namespace vanta
