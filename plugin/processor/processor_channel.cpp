#include "plugin/processor/processor_channel.hpp"

#include <algorithm>

namespace vanta {

GenericPluginProcessor::Channel::Channel(GenericPluginProcessor& owner)
    : processor(owner),
      index_(static_cast<int>(owner.channels_.size())),
      typeWord_(channelTypes(owner.channelLayout)[static_cast<std::size_t>(index_)]),
      mainInput_(owner.environment()),
      sideInput_(owner.environment()),
      connectedSideChain_(owner.environment(), owner) {
    owner.channels_.push_back(this);
}

void GenericPluginProcessor::Channel::ConnectedSideChainInput::produce(wave::BasicBlock<float>* block,
                                                                       int samples, int flags) {
    Input::produce(block, samples, flags);
    if (!processor_.sideChainWanted || !processor_.sideChainAvailable || !processor_.sideChainInUse) {
        publishSilence();
    }
}

void GenericPluginProcessor::setInputBuffers(const float* const* inputs, int inputCount, int samples) {
    if (processingMode != 1) return;
    const int mains = static_cast<int>(channels_.size());
    const int sides = std::max(inputCount - mains, 0);
    const bool sideChain = sideChainAvailable && sideChainWanted && sideChainInUse && sides > 0;
    for (Channel* channel : channels_) {
        const int index = channel->index();
        const float* main = index < inputCount ? inputs[index] : nullptr;
        // A narrower side chain serves the channels beyond it with its last one.
        const float* side = sideChain ? inputs[mains + std::min(index, sides - 1)] : main;
        channel->mainInput_.setBuffer(main, samples);
        channel->sideInput_.setBuffer(side, samples);
        channel->connectedSideChain_.setBuffer(side, samples);
    }
}

void GenericPluginProcessor::fetchOutputs(const float** wet, int channelCount, int samples) {
    for (int c = 0; c < channelCount; ++c) {
        wave::Producer* output = channels_[static_cast<std::size_t>(c)]->output;
        wet[c] = output ? output->pullData(samples) : environment_->silentBlock().data();
    }
}

}  // namespace vanta
