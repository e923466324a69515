#include <utility>

#include "plugin/parameters/abstract_plugin_parameter.hpp"
#include "plugin/processor/processor_channel.hpp"

// How a parameter takes effect: changed on any thread, queued, applied on the audio thread at a seam.
namespace vanta {

void GenericPluginProcessor::parameterChanged(int index, float value, int flags) {
    {
        // What a change brings with it arrives with it.
        const ChangeBlock block(*this);
        parameterAboutToChange(index);
        queueStanding(index, value);
    }
    if (!(flags & kFromHost) && adapter) adapter->parameterWasSet(index);
}

// Several threads may set one parameter and come here in another order than they stored in. Whoever queues
// last looks once more, so that the last in the queue is the value that stands.
void GenericPluginProcessor::queueStanding(int index, float value) {
    for (float standing = value;;) {
        parameterQueue_.push({index, standing});
        const float queued = std::exchange(standing, parameterAt(index)->value());
        if (standing == queued) return;
    }
}

void GenericPluginProcessor::requestDiscontinuity() {
    parameterQueue_.push({ParameterQueue::Change::kDiscontinuity, 0.0f});
}

void GenericPluginProcessor::applyPending() {
    if (parameterQueue_.settle()) applyPendingParameters();
}

void GenericPluginProcessor::applyPendingParameters() {
    if (!parameterQueue_.isDue()) return;
    const UpdateBlock block(forwarders);
    ParameterQueue::Change change{};
    while (parameterQueue_.next(change)) {
        if (change.isDiscontinuity()) {
            environment_->resetGraph(wave::ResetMode::MarkDiscontinuity);
        } else {
            applyParameter(change.index, change.value);
        }
    }
    if (parameterQueue_.takeOverflow()) {
        // Only what differs: to apply a style again would cost a reset of the graph.
        for (int i = 0; i < parameterCount(); ++i) {
            const float value = parameterAt(i)->value();
            if (value != appliedValue(*parameterAt(i))) applyParameter(i, value);
        }
    }
}

void GenericPluginProcessor::applyAllParameters() {
    const UpdateBlock block(forwarders);
    for (int i = 0; i < parameterCount(); ++i) applyParameter(i, parameterAt(i)->value());
}

void GenericPluginProcessor::applyParameter(int index, float value) {
    appliedValues_[static_cast<std::size_t>(index)] = value;
    // It may drive a property that no node hears of.
    environment_->noteChange();
    parameterAt(index)->applyValue(value);
    parameterApplied(index);
}

void GenericPluginProcessor::parameterApplied(int index) {
    for (Channel* channel : channels_) channel->parameterApplied(index);
    const auto isIndex = [index](const AbstractPluginParameter* p) { return p && p->index() == index; };
    if (isIndex(receiveMidiParameter)) midiMode_ = static_cast<int>(appliedValue(*receiveMidiParameter));
    if (isIndex(bypassParameter)) setBypassed(appliedValue(*bypassParameter) != 0.0f, 1);
}

}  // namespace vanta
