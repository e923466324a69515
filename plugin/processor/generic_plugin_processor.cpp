#include "plugin/processor/generic_plugin_processor.hpp"

#include <algorithm>
#include <cmath>
#include <mutex>

#include "foundation/numbers.hpp"
#include "plugin/parameters/abstract_plugin_parameter.hpp"
#include "plugin/processor/bypass_processor.hpp"
#include "plugin/processor/flush_denormals.hpp"

namespace vanta {

namespace {

/// A queue entry of this index asks for a discontinuity.
constexpr int kDiscontinuity = -1;
constexpr double kBeatWrap = 256.0;

struct SharedData {
    std::mutex mutex;
    int instances = 0;
};

SharedData& sharedData() {
    static SharedData data;
    return data;
}

}  // namespace

GenericPluginProcessor::GenericPluginProcessor(ChannelLayout layout)
    : GenericPluginBase(layout), midiQueue(1024), parameterQueue(8192) {
    for (auto& target : controllerTargets) target.store(kNoTarget, std::memory_order_relaxed);
}

GenericPluginProcessor::~GenericPluginProcessor() {
    const std::lock_guard lock(sharedData().mutex);
    if (environment_) --sharedData().instances;
}

void GenericPluginProcessor::initialize() {
    {
        const std::lock_guard lock(sharedData().mutex);
        if (sharedData().instances++ == 0) initShared();
    }
    environment_ = std::make_unique<wave::Environment>(kMaxSubBlock);
    environment_->sampleRateChanged.addHandler(this, &GenericPluginProcessor::onSampleRateChanged);
    eventReceiver = createEventReceiver();
    midiDecoder = std::make_unique<MidiDecoder>(*eventReceiver);
    bypassProcessor = std::make_unique<BypassProcessor>(*this);
    channels_.reserve(kMaxChannels);
    for (int i = 0; i < parameterCount(); ++i) appliedValues.push_back(parameterAt(i)->value());
}

std::unique_ptr<AbstractMusicEventReceiver> GenericPluginProcessor::createEventReceiver() {
    return std::make_unique<DefaultEventReceiver>(*this);
}

void GenericPluginProcessor::setSampleRate(float rate) {
    environment_->setSampleRate(rate);
}

float GenericPluginProcessor::sampleRate() const {
    return environment_->sampleRate();
}

void GenericPluginProcessor::sampleRateChanged() {
    for (Channel* channel : channels_) channel->sampleRateChanged();
}

void GenericPluginProcessor::beginChange() {
    parameterHold.fetch_add(1);
    changeEpoch.fetch_add(1);
}

void GenericPluginProcessor::endChange() {
    parameterHold.fetch_sub(1);
}

void GenericPluginProcessor::parameterChanged(int index, float value, int flags) {
    {
        // What a change brings with it arrives with it.
        const ChangeBlock block(*this);
        parameterAboutToChange(index);
        if (!parameterQueue.push(LockFreeFifo::Item::of(index, value))) reapplyAll.store(true);
    }
    if (!(flags & kFromHost) && adapter) adapter->parameterWasSet(index);
}

void GenericPluginProcessor::requestDiscontinuity() {
    parameterQueue.push(LockFreeFifo::Item::of(kDiscontinuity, 0.0f));
}

bool GenericPluginProcessor::queueMidi(int offset, std::uint8_t status, std::uint8_t data1,
                                       std::uint8_t data2) {
    const std::uint32_t bytes = status | std::uint32_t{data1} << 8 | std::uint32_t{data2} << 16;
    return midiQueue.push({static_cast<std::uint32_t>(std::max(offset, 0)), bytes});
}

void GenericPluginProcessor::setControllerTarget(int number, int target) {
    controllerTargets[static_cast<std::size_t>(number)].store(target, std::memory_order_relaxed);
}

void GenericPluginProcessor::updateTransport(float tempo, float hostPosition) {
    if (nearlyEqual(hostPosition, lastHostPosition)) {
        // The host gives no running position: count on by the last block.
        const double beats = hostBlockSamples * static_cast<double>(tempo) / 60.0 / sampleRate();
        beatPosition_ = std::fmod(beatPosition_ + beats, kBeatWrap);
    } else {
        beatPosition_ = hostPosition;
    }
    lastHostPosition = hostPosition;
    transportChanged(tempo, beatPosition_);
}

void GenericPluginProcessor::processBlock(const float* const* inputs, int inputCount, float* const* outputs,
                                          int channelCount, int samples) {
    const RealtimeScope realtime;
    const FlushDenormals flush;
    countIdle(samples);
    learnedController = -1;
    hostBlockSamples = samples;
    environment_->setHostBlockSamples(samples);
    applyPending();
    channelCount = std::min(channelCount, static_cast<int>(channels_.size()));
    setInputBuffers(inputs, inputCount, samples);
    // The dry path may ask for more channels than the host delivers.
    std::array<const float*, kMaxChannels> mains{};
    std::copy_n(inputs, std::clamp(inputCount, 0, channelCount), mains.begin());
    if (drainMidi(mains.data(), outputs, channelCount, samples) && adapter) {
        adapter->midiLearnHappened(learnedController);
    }
}

void GenericPluginProcessor::countIdle(int samples) {
    int idle = idleSamples.load();
    int next = 0;
    do {
        next = samples < kMaxIdleSamples - idle ? idle + samples : kMaxIdleSamples;
    } while (!idleSamples.compare_exchange_weak(idle, next));
    environment_->setMeteringActive(sampleRate() > static_cast<float>(next));
}

// Runs the block from event to event. Whether there was an event.
bool GenericPluginProcessor::drainMidi(const float* const* inputs, float* const* outputs, int channelCount,
                                       int samples) {
    int position = 0;
    bool hadEvent = false;
    LockFreeFifo::Item event{};
    while (position < samples) {
        const bool pending = midiQueue.pop(event);
        const int end =
            pending ? static_cast<int>(std::min(event.first, static_cast<std::uint32_t>(samples))) : samples;
        processUntil(inputs, outputs, channelCount, position, end);
        if (!pending) continue;
        decode(event);
        hadEvent = true;
        applyPending();
    }
    // At most what stands there now, so that a sender without end cannot hold the audio thread.
    for (auto left = midiQueue.sizeEstimate(); left > 0 && midiQueue.pop(event); --left) {
        decode(event);
        hadEvent = true;
    }
    return hadEvent;
}

void GenericPluginProcessor::processUntil(const float* const* inputs, float* const* outputs, int channelCount,
                                          int& position, int end) {
    while (position < end) {
        int count = std::min(kMaxSubBlock, end - position);
        if (const int seam = bypassProcessor->samplesToSeam()) count = std::min(count, seam);
        bypassProcessor->process(inputs, outputs, channelCount, position, count);
        position += count;
    }
}

void GenericPluginProcessor::decode(LockFreeFifo::Item event) {
    const std::uint8_t message[3] = {static_cast<std::uint8_t>(event.second),
                                     static_cast<std::uint8_t>(event.second >> 8),
                                     static_cast<std::uint8_t>(event.second >> 16)};
    midiDecoder->receive(message);
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

void GenericPluginProcessor::setBypassed(bool request, int source) {
    bypassRequests[static_cast<std::size_t>(source)] = request;
    const bool effective = bypassRequests[0] || bypassRequests[1];
    if (effective == bypassProcessor->bypassed()) return;
    // A graph that has rested holds stale signal; one that ran all along must not be cut.
    const bool stale = bypassProcessor->bypassed() && bypassProcessor->hasRested();
    bypassProcessor->setBypassed(effective);
    if (stale) environment_->resetGraph(wave::ResetMode::ResetActive);
}

void GenericPluginProcessor::controllerChanged(int number, float value) {
    learnedController = number;
    if (number < 0 || number >= kControllerCount) return;
    const int target = controllerTargets[static_cast<std::size_t>(number)].load(std::memory_order_relaxed);
    if (target == kNoTarget) return;
    const int extra = target - kExtraTargetBase;
    if (extra >= 0) {
        if (extra < static_cast<int>(extraTargets.size()) && extraTargets[static_cast<std::size_t>(extra)]) {
            extraTargets[static_cast<std::size_t>(extra)]->assign(value, this);
        }
    } else if (target >= 0 && target < parameterCount()) {
        AbstractPluginParameter& parameter = *parameterAt(target);
        parameter.setValue(parameter.denormalize(value), 0);
    }
}

void GenericPluginProcessor::programChanged(int bank, int program) {
    if (adapter) adapter->programChange(bank, program);
}

void GenericPluginProcessor::applyPending() {
    // A block of changes is applied whole or not at all. What was counted while no block was open, with none
    // opened since, is complete; the rest waits.
    const std::uint32_t epoch = changeEpoch.load();
    if (parameterHold.load() != 0) return;
    notePendingChanges();
    if (changeEpoch.load() != epoch) return;
    applyPendingParameters();
}

void GenericPluginProcessor::notePendingChanges() {
    pendingParameters = parameterQueue.sizeEstimate();
}

void GenericPluginProcessor::applyPendingParameters() {
    if (pendingParameters == 0 && !reapplyAll.load(std::memory_order_relaxed)) return;
    const UpdateBlock block(forwarders);
    LockFreeFifo::Item change{};
    for (; pendingParameters > 0 && parameterQueue.pop(change); --pendingParameters) {
        if (change.index() == kDiscontinuity) {
            environment_->resetGraph(wave::ResetMode::MarkDiscontinuity);
        } else {
            applyParameter(change.index(), change.value());
        }
    }
    if (reapplyAll.exchange(false)) {
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
    appliedValues[static_cast<std::size_t>(index)] = value;
    parameterAt(index)->applyValue(value);
    parameterApplied(index);
}

void GenericPluginProcessor::parameterApplied(int index) {
    for (Channel* channel : channels_) channel->parameterApplied(index);
    const auto isIndex = [index](const AbstractPluginParameter* p) { return p && p->index() == index; };
    if (isIndex(receiveMidiParameter)) midiMode = static_cast<int>(appliedValue(*receiveMidiParameter));
    if (isIndex(bypassParameter)) setBypassed(appliedValue(*bypassParameter) != 0.0f, 1);
}

void GenericPluginProcessor::reset() {
    environment_->resetGraph(wave::ResetMode::ResetActive);
    bypassProcessor->reset();
    beatPosition_ = 0.0;
    hostBlockSamples = 0;
    applyPending();
}

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
    if (!processor.sideChainWanted || !processor.sideChainAvailable || !processor.sideChainInUse) {
        publishSilence();
    }
}

}  // namespace vanta
