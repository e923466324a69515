#include "host/unified/unified_plugin_adapter.hpp"

#include <cmath>

#include "foundation/numbers.hpp"
#include "host/unified/host_position.hpp"
#include "limiter/factory/factory_archive.hpp"
#include "limiter/model/vanta_plugin.hpp"
#include "limiter/processor/vanta_processor.hpp"

namespace vanta {
namespace {

/// A host may round what it was told. A position this near to that of the model's value is that value.
constexpr double kHostRounding = 2.77e-5;

/// Holds an interface for a scope, if there is one.
class InterfaceLock {
public:
    explicit InterfaceLock(PluginListener* listener) : listener_(listener) {
        if (listener_) listener_->lockInterface();
    }
    ~InterfaceLock() {
        if (listener_) listener_->unlockInterface();
    }
    InterfaceLock(const InterfaceLock&) = delete;
    InterfaceLock& operator=(const InterfaceLock&) = delete;

private:
    PluginListener* listener_;
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
    audioSide_.emplace(model_->parameterCount());
    processor_ = createProcessor(layout);
    processor_->setAdapter(this);
    processor_->prepare(model_->sampleRate());
    {
        // From here on another instance that edits the controller map calls us.
        const auto shared = model_->statics().lock();
        model_->setAdapter(this);
        midiMapChanged();
    }
    sendAllParameters(false);
}

void UnifiedPluginAdapter::prepare(float sampleRate, int largestBlock) {
    if (!nearlyEqual(sampleRate, model_->sampleRate())) model_->setSampleRate(sampleRate);
    processor_->prepare(sampleRate, largestBlock);
}

// From the host

void UnifiedPluginAdapter::hostPositionChanged(int index, double position) {
    if (!isParameter(index) || std::isnan(position) || audioSide_->isStale(index, position)) return;
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
    if (audioSide_->isStale(index, hostPosition(parameter, static_cast<float>(value)))) return;
    const float own = fromHostValue(parameter, value);
    parameter.setValue(own, kFromHost);
    processor_->parameterAt(index)->setValue(own, kFromHost);
}

void UnifiedPluginAdapter::hostValueChangedInBlock(int index, double value) {
    if (!isParameter(index)) return;
    AbstractPluginParameter& parameter = *processor_->parameterAt(index);
    parameter.setValue(fromHostValue(parameter, value), kFromHost);
    audioSide_->markForModel(index);
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
    const CriticalSection::Scope held(lock_);
    if (index != GenericPlugin::kAllParameters) {
        const float value = model_->parameterAt(index)->value();
        reportParameter(index, value);
        if (roundTrip_ == RoundTrip::ByUs) give(index, value);
        return;
    }
    sendAllParameters(reset);
    for (int i = 0; i < model_->parameterCount(); ++i) reportParameter(i, model_->parameterAt(i)->value());
}

void UnifiedPluginAdapter::midiMapChanged() {
    // The lock of what instances share comes before ours.
    const auto shared = model_->statics().lock();
    const CriticalSection::Scope held(lock_);
    model_->statics().controllers.applyTo(*processor_);
}

void UnifiedPluginAdapter::sendMidi(const MidiMessage& message) {
    const CriticalSection::Scope held(lock_);
    queueMidi(0, message);
}

void UnifiedPluginAdapter::syncLevels() {
    pumpEvents();
    // The interface's lock comes before ours.
    const ModelOwner::ListenerCall call(model_->owner());
    const InterfaceLock interface(call.listener());
    const CriticalSection::Scope held(lock_);
    transferLevels();
}

void UnifiedPluginAdapter::transferLevels() {
    model_->levels().takeCommands(levelCommands_);
    processor_->applyLevelCommands(levelCommands_);
    transfer_.clear();
    transfer_.seekp(0);
    transfer_.seekg(0);
    BinaryDataWriter writer(transfer_);
    processor_->writeVisualData(writer);
    BinaryDataReader reader(transfer_);
    model_->readLevelData(reader);
}

// From the processor

void UnifiedPluginAdapter::programChange(int bank, int program) {
    model_->eventQueue().post(ProgramRequested{bank, program});
}

void UnifiedPluginAdapter::midiLearnHappened(int controller) {
    if (controller >= 0) model_->eventQueue().post(ControllerMoved{controller});
}

void UnifiedPluginAdapter::parameterWasSet(int index) {
    audioSide_->markForModelAndHost(index);
}

int UnifiedPluginAdapter::pumpEvents() {
    if (!model_->owner().isThisThread()) return 0;
    return deliverAudioSideChanges() + model_->pumpEvents();
}

int UnifiedPluginAdapter::claimAndPump() {
    return model_->owner().claim() ? pumpEvents() : 0;
}

int UnifiedPluginAdapter::deliverAudioSideChanges() {
    const int delivered = audioSide_->takeForModel([this](int index) {
        model_->parameterAt(index)->setValue(processor_->parameterAt(index)->value(), kFromHost);
    });
    audioSide_->takeForHost([this](int index, std::atomic<double>& told) {
        const AbstractPluginParameter& parameter = *model_->parameterAt(index);
        const float value = parameter.value();
        told.store(hostPosition(parameter, value));
        reportParameter(index, value);
    });
    return delivered;
}

}  // namespace vanta
