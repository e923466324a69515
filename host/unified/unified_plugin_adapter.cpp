#include "host/unified/unified_plugin_adapter.hpp"

#include <algorithm>
#include <cmath>

#include "foundation/numbers.hpp"
#include "host/unified/host_position.hpp"
#include "limiter/factory/factory_archive.hpp"
#include "limiter/model/vanta_plugin.hpp"
#include "limiter/processor/vanta_processor.hpp"
#include "plugin/model/session_state.hpp"

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
    if (!isParameter(index) || std::isnan(position) || audioSide_->isAnswer(index, position)) return;
    const AbstractPluginParameter& parameter = *model_->parameterAt(index);
    const float own = parameter.value();
    const double distance = std::abs(hostPosition(parameter, own) - position);
    // The model's own value comes back: to the last bit, whatever its trip through the host has cost.
    const bool same = distance <= static_cast<double>(kEqualWithin);
    const bool continuous = parameter.kind() == AbstractPluginParameter::Kind::Float;
    takeFromHost(index, same ? own : valueAt(parameter, position), continuous && distance <= kHostRounding);
}

void UnifiedPluginAdapter::hostPositionShown(int index, double position) {
    if (!isParameter(index) || std::isnan(position) || audioSide_->isAnswer(index, position)) return;
    AbstractPluginParameter& parameter = *model_->parameterAt(index);
    if (isApart(*model_, index, position)) parameter.setValue(valueAt(parameter, position), kFromHost);
}

void UnifiedPluginAdapter::hostValueChanged(int index, double value) {
    if (!isParameter(index)) return;
    const AbstractPluginParameter& parameter = *model_->parameterAt(index);
    if (audioSide_->isAnswer(index, hostPosition(parameter, static_cast<float>(value)))) return;
    takeFromHost(index, fromHostValue(parameter, value), false);
}

void UnifiedPluginAdapter::forgetTold(int index) {
    if (isParameter(index)) audioSide_->clearTold(index);
}

void UnifiedPluginAdapter::takeFromHost(int index, float value, bool modelHasIt) {
    AbstractPluginParameter& parameter = *model_->parameterAt(index);
    give(index, value);
    if (!modelHasIt) parameter.setValue(value, kFromHost);
    deliverAgainIfApart(index, hostPosition(parameter, parameter.value()));
}

bool UnifiedPluginAdapter::isApart(const GenericPluginBase& side, int index, double position) const {
    const AbstractPluginParameter& parameter = *side.parameterAt(index);
    return std::abs(hostPosition(parameter, parameter.value()) - position) > kHostRounding;
}

/// Of several threads at one parameter each may have been the last somewhere.
void UnifiedPluginAdapter::deliverAgainIfApart(int index, double position) {
    if (isApart(*processor_, index, position)) audioSide_->markForModelAndHost(index);
}

void UnifiedPluginAdapter::hostValueChangedInBlock(int index, double value) {
    if (!isParameter(index)) return;
    AbstractPluginParameter& parameter = *processor_->parameterAt(index);
    const float own = fromHostValue(parameter, value);
    const double position = hostPosition(parameter, own);
    if (std::isnan(position) || audioSide_->isAnswer(index, position)) return;
    parameter.setValue(own, kFromHost);
    // The model keeps the value that it has sent itself, to the last bit.
    if (isApart(*model_, index, position)) audioSide_->markForModel(index);
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
    const CriticalSection::Scope held(lock_);
    const ChangeBlock block(*processor_);
    if (reset) audioSide_->forget();
    for (int i = 0; i < model_->parameterCount(); ++i) give(i, model_->parameterAt(i)->value());
    if (reset) processor_->requestDiscontinuity();
}

void UnifiedPluginAdapter::sendState(std::span<const float> values) {
    const CriticalSection::Scope held(lock_);
    const ChangeBlock block(*processor_);
    audioSide_->forget();
    const int count = std::min(static_cast<int>(values.size()), model_->parameterCount());
    for (int i = 0; i < count; ++i) give(i, values[static_cast<std::size_t>(i)]);
    processor_->requestDiscontinuity();
}

void UnifiedPluginAdapter::give(int index, float value) {
    processor_->parameterAt(index)->setValue(value, kFromHost);
}

float UnifiedPluginAdapter::giveOwn(int index) {
    const CriticalSection::Scope held(lock_);
    const float value = model_->parameterAt(index)->value();
    give(index, value);
    return value;
}

void UnifiedPluginAdapter::parameterUpdated(int index) {
    if (index == GenericPlugin::kAllParameters) {
        for (int i = 0; i < model_->parameterCount(); ++i) {
            if (audioSide_->isWaiting(i)) {
                // Newer, and delivered next.
                audioSide_->markForModelAndHost(i);
            } else {
                tell(i, giveOwn(i));
            }
        }
    } else if (roundTrip_ == RoundTrip::ByUs) {
        tell(index, giveOwn(index));
    } else {
        // Its answer is how the processor hears of it.
        audioSide_->clearTold(index);
        reportParameter(index, model_->parameterAt(index)->value());
    }
}

/// Tells the host what the processor has.
void UnifiedPluginAdapter::tell(int index, float value) {
    const double position = hostPosition(*model_->parameterAt(index), value);
    audioSide_->setTold(index, position);
    reportParameter(index, value);
    deliverAgainIfApart(index, position);
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
    transfer_.clear();
    transfer_.seekp(0);
    transfer_.seekg(0);
    BinaryDataWriter writer(transfer_);
    exchangeLevels(levelCommands_, writer);
    BinaryDataReader reader(transfer_);
    model_->readLevelData(reader);
}

void UnifiedPluginAdapter::exchangeLevels(std::span<const std::uint8_t> commands, BinaryDataWriter& writer) {
    const CriticalSection::Scope held(lock_);
    processor_->applyLevelCommands(commands);
    processor_->writeVisualData(writer);
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

bool UnifiedPluginAdapter::hasWork() const {
    return audioSide_->isAnyWaiting() || model_->eventQueue().isDue();
}

int UnifiedPluginAdapter::pumpEvents() {
    // Whoever becomes owner meanwhile waits, and finds the host told.
    const int delivered = model_->owner().runAsOwner([this] { return deliverAudioSideChanges(); });
    return delivered + model_->pumpEvents();
}

int UnifiedPluginAdapter::claimAndPump() {
    return model_->owner().claim() ? pumpEvents() : 0;
}

int UnifiedPluginAdapter::deliverAudioSideChanges() {
    return audioSide_->take([this](int index, bool toHost) {
        const float value = takeFromProcessor(index);
        if (toHost) {
            tell(index, value);
        } else {
            // The host set it on its own, and has left what it was told.
            audioSide_->clearTold(index);
        }
    });
}

/// The result is what the model was set to: what the processor has, also if that changes meanwhile.
float UnifiedPluginAdapter::takeFromProcessor(int index) {
    const AbstractPluginParameter& source = *processor_->parameterAt(index);
    for (;;) {
        const float value = source.value();
        model_->parameterAt(index)->setValue(value, kFromHost);
        if (source.value() == value) return value;
    }
}

// A session

void UnifiedPluginAdapter::takeAllThatWaits() {
    // It goes on waiting, as the host is still to be told.
    for (int i = 0; i < model_->parameterCount(); ++i) {
        if (audioSide_->isWaiting(i)) takeFromProcessor(i);
    }
}

std::vector<std::byte> UnifiedPluginAdapter::saveState() {
    takeAllThatWaits();
    return writeSessionState(*model_);
}

bool UnifiedPluginAdapter::restoreState(std::span<const std::byte> bytes) {
    return readSessionState(*model_, bytes);
}

void UnifiedPluginAdapter::deliverBeforeRender() {
    takeAllThatWaits();
    sendAllParameters(false);
}

}  // namespace vanta
