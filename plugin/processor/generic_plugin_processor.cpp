#include "plugin/processor/generic_plugin_processor.hpp"

#include <algorithm>
#include <cmath>
#include <mutex>

#include "foundation/numbers.hpp"
#include "plugin/parameters/abstract_plugin_parameter.hpp"
#include "plugin/processor/bypass_processor.hpp"
#include "plugin/processor/flush_denormals.hpp"
#include "plugin/processor/processor_channel.hpp"

namespace vanta {

namespace {

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
    : GenericPluginBase(layout), midiQueue_(1024) {
    for (auto& target : controllerTargets_) target.store(kNoTarget, std::memory_order_relaxed);
}

GenericPluginProcessor::~GenericPluginProcessor() {
    const std::lock_guard lock(sharedData().mutex);
    if (isCounted_) --sharedData().instances;
}

void GenericPluginProcessor::initialize() {
    {
        const std::lock_guard lock(sharedData().mutex);
        if (sharedData().instances == 0) initShared();
        ++sharedData().instances;
        isCounted_ = true;
    }
    environment_ = std::make_unique<wave::Environment>(kMaxSubBlock);
    sampleRate_.store(environment_->sampleRate(), std::memory_order_relaxed);
    environment_->sampleRateChanged.addHandler(this, &GenericPluginProcessor::onSampleRateChanged);
    eventReceiver_ = createEventReceiver();
    midiDecoder_ = std::make_unique<MidiDecoder>(*eventReceiver_);
    bypassProcessor_ = std::make_unique<BypassProcessor>(*this);
    bypassProcessor_->prepare(largestLatency(sampleRate()));
    channels_.reserve(kMaxChannels);
    for (int i = 0; i < parameterCount(); ++i) appliedValues_.push_back(parameterAt(i)->value());
}

std::unique_ptr<AbstractMusicEventReceiver> GenericPluginProcessor::createEventReceiver() {
    return std::make_unique<DefaultEventReceiver>(*this);
}

void GenericPluginProcessor::prepare(float sampleRate, int largestBlock) {
    // First, as what hears of the change asks for it.
    sampleRate_.store(sampleRate, std::memory_order_relaxed);
    environment_->setSampleRate(sampleRate);
    if (largestBlock > 0) largestBlockAnnounced(largestBlock);
}

void GenericPluginProcessor::onSampleRateChanged(void*) {
    bypassProcessor_->prepare(largestLatency(sampleRate()));
    sampleRateChanged();
}

void GenericPluginProcessor::sampleRateChanged() {
    for (Channel* channel : channels_) channel->sampleRateChanged();
}

bool GenericPluginProcessor::queueMidi(int offset, std::uint8_t status, std::uint8_t data1,
                                       std::uint8_t data2) {
    const std::uint32_t bytes = status | std::uint32_t{data1} << 8 | std::uint32_t{data2} << 16;
    return midiQueue_.push({static_cast<std::uint32_t>(std::max(offset, 0)), bytes});
}

void GenericPluginProcessor::setControllerTarget(int number, int target) {
    controllerTargets_[static_cast<std::size_t>(number)].store(target, std::memory_order_relaxed);
}

void GenericPluginProcessor::updateTransport(float tempo, float hostPosition) {
    if (nearlyEqual(hostPosition, lastHostPosition_)) {
        // The host gives no running position: count on by the last block.
        const double beats = hostBlockSamples_ * static_cast<double>(tempo) / 60.0 / sampleRate();
        beatPosition_ = std::fmod(beatPosition_ + beats, kBeatWrap);
    } else {
        beatPosition_ = hostPosition;
    }
    lastHostPosition_ = hostPosition;
    transportChanged(tempo, beatPosition_);
}

void GenericPluginProcessor::processBlock(const float* const* inputs, int inputCount, float* const* outputs,
                                          int channelCount, int samples) {
    const RealtimeScope realtime;
    const FlushDenormals flush;
    countIdle(samples);
    learnedController_ = -1;
    hostBlockSamples_ = samples;
    environment_->setHostBlockSamples(samples);
    applyPending();
    channelCount = std::min(channelCount, static_cast<int>(channels_.size()));
    setInputBuffers(inputs, inputCount, samples);
    // The dry path may ask for more channels than the host delivers.
    std::array<const float*, kMaxChannels> mains{};
    std::copy_n(inputs, std::clamp(inputCount, 0, channelCount), mains.begin());
    if (drainMidi(mains.data(), outputs, channelCount, samples) && adapter) {
        adapter->midiLearnHappened(learnedController_);
    }
}

void GenericPluginProcessor::countIdle(int samples) {
    int idle = idleSamples_.load();
    int next = 0;
    do {
        next = samples < kMaxIdleSamples - idle ? idle + samples : kMaxIdleSamples;
    } while (!idleSamples_.compare_exchange_weak(idle, next));
    environment_->setMeteringActive(sampleRate() > static_cast<float>(next));
}

// Runs the block from event to event. Whether there was an event.
bool GenericPluginProcessor::drainMidi(const float* const* inputs, float* const* outputs, int channelCount,
                                       int samples) {
    int position = 0;
    bool hadEvent = false;
    LockFreeFifo::Item event{};
    while (position < samples) {
        const bool pending = midiQueue_.pop(event);
        const int end =
            pending ? static_cast<int>(std::min(event.first, static_cast<std::uint32_t>(samples))) : samples;
        processUntil(inputs, outputs, channelCount, position, end);
        if (!pending) continue;
        decode(event);
        hadEvent = true;
        applyPending();
    }
    // At most what stands there now, so that a sender without end cannot hold the audio thread.
    for (auto left = midiQueue_.sizeEstimate(); left > 0 && midiQueue_.pop(event); --left) {
        decode(event);
        hadEvent = true;
    }
    return hadEvent;
}

void GenericPluginProcessor::processUntil(const float* const* inputs, float* const* outputs, int channelCount,
                                          int& position, int end) {
    while (position < end) {
        int count = std::min(kMaxSubBlock, end - position);
        if (const int seam = bypassProcessor_->samplesToSeam()) count = std::min(count, seam);
        bypassProcessor_->process(inputs, outputs, channelCount, position, count);
        position += count;
    }
}

void GenericPluginProcessor::decode(LockFreeFifo::Item event) {
    const std::uint8_t message[3] = {static_cast<std::uint8_t>(event.second),
                                     static_cast<std::uint8_t>(event.second >> 8),
                                     static_cast<std::uint8_t>(event.second >> 16)};
    midiDecoder_->receive(message);
}

void GenericPluginProcessor::setBypassed(bool request, int source) {
    bypassRequests_[static_cast<std::size_t>(source)] = request;
    const bool effective = bypassRequests_[0] || bypassRequests_[1];
    if (effective == bypassProcessor_->bypassed()) return;
    // A graph that has rested holds stale signal; one that ran all along must not be cut.
    const bool stale = bypassProcessor_->bypassed() && bypassProcessor_->hasRested();
    bypassProcessor_->setBypassed(effective);
    if (stale) environment_->resetGraph(wave::ResetMode::ResetActive);
}

void GenericPluginProcessor::controllerChanged(int number, float value) {
    learnedController_ = number;
    if (number < 0 || number >= kControllerCount) return;
    const int target = controllerTargets_[static_cast<std::size_t>(number)].load(std::memory_order_relaxed);
    if (target == kNoTarget) return;
    const int extra = target - kExtraTargetBase;
    if (extra >= 0) {
        if (extra < static_cast<int>(extraTargets.size()) && extraTargets[static_cast<std::size_t>(extra)]) {
            extraTargets[static_cast<std::size_t>(extra)]->assign(value, this);
            environment_->noteChange();
        }
    } else if (target >= 0 && target < parameterCount()) {
        AbstractPluginParameter& parameter = *parameterAt(target);
        parameter.setValue(parameter.denormalize(value), 0);
    }
}

void GenericPluginProcessor::programChanged(int bank, int program) {
    if (adapter) adapter->programChange(bank, program);
}

void GenericPluginProcessor::reset() {
    environment_->resetGraph(wave::ResetMode::ResetActive);
    bypassProcessor_->reset();
    beatPosition_ = 0.0;
    hostBlockSamples_ = 0;
    applyPending();
}

}  // namespace vanta
