#include "host/unified/unified_plugin_adapter.hpp"

#include <cmath>
#include <limits>

#include "foundation/numbers.hpp"
#include "host/unified/host_position.hpp"
#include "limiter/factory/factory_archive.hpp"
#include "limiter/vanta_plugin.hpp"
#include "limiter/vanta_processor.hpp"

namespace vanta {
namespace {

/// A host may round what it was told. So near to the value that the model has, it is that value.
constexpr double kHostRounding = 2.77e-5;

/// Holds an interface for a scope, if there is one.
class InterfaceLock {
public:
    explicit InterfaceLock(GenericPlugin::Listener* held) : listener(held) {
        if (listener) listener->lockInterface();
    }
    ~InterfaceLock() {
        if (listener) listener->unlockInterface();
    }
    InterfaceLock(const InterfaceLock&) = delete;
    InterfaceLock& operator=(const InterfaceLock&) = delete;

private:
    GenericPlugin::Listener* listener;
};

}  // namespace

UnifiedPluginAdapter::~UnifiedPluginAdapter() {
    if (model_) {
        // Another instance may be editing the controller map, which calls us through the model.
        const auto shared = model_->statics().lock();
        model_->setAdapter(nullptr);
    }
    if (processor_) processor_->environment().setDestroying();
    model_.reset();
    processor_.reset();
}

std::unique_ptr<GenericPlugin> UnifiedPluginAdapter::createModel(ChannelLayout layout) {
    // The first instance may have to restore them.
    registerFactoryArchive();
    return std::make_unique<VantaPlugin>(layout);
}

std::unique_ptr<GenericPluginProcessor> UnifiedPluginAdapter::createProcessor(ChannelLayout layout) {
    return std::make_unique<VantaProcessor>(layout);
}

void UnifiedPluginAdapter::create(ChannelLayout layout) {
    model_ = createModel(layout);
    const int count = model_->parameterCount();
    dueToModel = std::make_unique<AtomicBitSet>(count);
    dueToHost = std::make_unique<AtomicBitSet>(count);
    reportedFromAudio = std::vector<std::atomic<double>>(static_cast<std::size_t>(count));
    for (auto& position : reportedFromAudio) position.store(std::numeric_limits<double>::quiet_NaN());
    processor_ = createProcessor(layout);
    processor_->setAdapter(this);
    processor_->setSampleRate(model_->sampleRate());
    {
        // From here on another instance that edits the controller map calls us.
        const auto shared = model_->statics().lock();
        model_->setAdapter(this);
        midiMapChanged();
    }
    sendAllParameters(false);
}

void UnifiedPluginAdapter::setSampleRate(float rate) {
    if (!nearlyEqual(rate, model_->sampleRate())) model_->setSampleRate(rate);
    if (!nearlyEqual(rate, processor_->sampleRate())) processor_->setSampleRate(rate);
}

// From the host

void UnifiedPluginAdapter::hostPositionChanged(int index, double position) {
    if (!isParameter(index) || std::isnan(position) || isStale(index, position)) return;
    AbstractPluginParameter& parameter = *model_->parameterAt(index);
    const double distance = std::abs(hostPosition(parameter, parameter.value()) - position);
    // The model's own value comes back: to the last bit, whatever its trip through the host has cost.
    const bool same = distance <= static_cast<double>(kEqualWithin);
    const float value = same ? parameter.value() : valueAt(parameter, position);
    const bool continuous = parameter.kind() == AbstractPluginParameter::Kind::Float;
    if (!continuous || distance > kHostRounding) parameter.setValue(value, kFromHost);
    processor_->parameterAt(index)->setValue(value, kFromHost);
}

void UnifiedPluginAdapter::hostValueChanged(int index, double value) {
    if (!isParameter(index)) return;
    AbstractPluginParameter& parameter = *model_->parameterAt(index);
    if (isStale(index, hostPosition(parameter, static_cast<float>(value)))) return;
    const float own = fromHostValue(parameter, value);
    parameter.setValue(own, kFromHost);
    processor_->parameterAt(index)->setValue(own, kFromHost);
}

// The host answers what we told it of an audio-side change, while a newer one is already on its way: to take
// the old one would move a controller back.
bool UnifiedPluginAdapter::isStale(int index, double position) const {
    const double told = reportedFromAudio[static_cast<std::size_t>(index)].load();
    return dueToModel->test(index) && std::abs(told - position) <= static_cast<double>(kEqualWithin);
}

void UnifiedPluginAdapter::hostValueChangedInBlock(int index, double value) {
    if (!isParameter(index)) return;
    AbstractPluginParameter& parameter = *processor_->parameterAt(index);
    parameter.setValue(fromHostValue(parameter, value), kFromHost);
    dueToModel->set(index);
}

bool UnifiedPluginAdapter::receivesMidi() const {
    const AbstractPluginParameter* receive = processor_->receiveMidiParameter;
    return !receive || receive->value() == static_cast<float>(GenericPluginBase::MidiState::Enabled);
}

bool UnifiedPluginAdapter::queueMidi(int offset, const MidiMessage& message) {
    return !receivesMidi() || processor_->queueMidi(offset, message.status, message.data1, message.data2);
}

// From the model

void UnifiedPluginAdapter::sendAllParameters(bool reset) {
    const ChangeBlock block(*processor_);
    for (int i = 0; i < model_->parameterCount(); ++i) give(i, model_->parameterAt(i)->value());
    if (reset) processor_->requestDiscontinuity();
}

void UnifiedPluginAdapter::give(int index, float value) {
    processor_->parameterAt(index)->setValue(value, kFromHost);
}

void UnifiedPluginAdapter::parameterUpdated(int index, bool reset) {
    const CriticalSection::Scope held(lock);
    if (index != GenericPlugin::kAllParameters) {
        const float value = model_->parameterAt(index)->value();
        reportParameter(index, value);
        if (roundTrip == RoundTrip::ByUs) give(index, value);
        return;
    }
    sendAllParameters(reset);
    for (int i = 0; i < model_->parameterCount(); ++i) reportParameter(i, model_->parameterAt(i)->value());
}

void UnifiedPluginAdapter::midiMapChanged() {
    // The lock of what instances share comes before ours.
    const auto shared = model_->statics().lock();
    const CriticalSection::Scope held(lock);
    model_->statics().controllers.applyTo(*processor_);
}

void UnifiedPluginAdapter::sendMidi(const MidiMessage& message) {
    const CriticalSection::Scope held(lock);
    queueMidi(0, message);
}

void UnifiedPluginAdapter::syncLevels() {
    pumpEvents();
    // The interface's lock comes before ours.
    const GenericPlugin::ListenerCall call(*model_);
    const InterfaceLock interface(call.listener());
    const CriticalSection::Scope held(lock);
    transferLevels();
}

void UnifiedPluginAdapter::transferLevels() {
    model_->takeLevelCommands(levelCommands);
    processor_->applyLevelCommands(levelCommands);
    transfer.clear();
    transfer.seekp(0);
    transfer.seekg(0);
    BinaryDataWriter writer(transfer);
    processor_->writeVisualData(writer);
    BinaryDataReader reader(transfer);
    model_->readLevelData(reader);
}

// From the processor

void UnifiedPluginAdapter::programChange(int bank, int program) {
    model_->eventQueue().post(ModelEventQueue::Program, bank << 8 | program);
}

void UnifiedPluginAdapter::midiLearnHappened(int controller) {
    if (controller >= 0) model_->eventQueue().post(ModelEventQueue::LearnedController, controller);
}

void UnifiedPluginAdapter::parameterWasSet(int index) {
    dueToModel->set(index);
    dueToHost->set(index);
}

int UnifiedPluginAdapter::pumpEvents() {
    if (!model_->onOwnerThread()) return 0;
    return deliverAudioSideChanges() + model_->pumpEvents();
}

int UnifiedPluginAdapter::claimAndPump() {
    return model_->claim() ? pumpEvents() : 0;
}

int UnifiedPluginAdapter::deliverAudioSideChanges() {
    int delivered = 0;
    dueToModel->takeEach([&](int index) {
        model_->parameterAt(index)->setValue(processor_->parameterAt(index)->value(), kFromHost);
        ++delivered;
    });
    dueToHost->takeEach([&](int index) {
        const AbstractPluginParameter& parameter = *model_->parameterAt(index);
        const float value = parameter.value();
        reportedFromAudio[static_cast<std::size_t>(index)].store(hostPosition(parameter, value));
        reportParameter(index, value);
    });
    return delivered;
}

}  // namespace vanta
