#include "plugin/model/generic_plugin.hpp"

#include <algorithm>
#include <chrono>
#include <utility>

#include "plugin/parameters/abstract_plugin_parameter.hpp"

namespace vanta {
namespace {

/// How often `setListener` looks whether the last call into the old one has returned.
constexpr std::chrono::milliseconds kListenerPoll{1};

/// The instances of the process and what they share.
struct Process {
    std::recursive_mutex section;
    int instances = 0;
    std::unique_ptr<PluginStatics> statics;
};

Process& process() {
    static Process theProcess;
    return theProcess;
}

thread_local GenericPlugin::ListenerCall* innermostCall = nullptr;

}  // namespace

GenericPlugin::ListenerCall::ListenerCall(GenericPlugin& owner) : model(owner), outer(innermostCall) {
    // Counted before the listener is loaded: who replaces it stores first and then looks at the count.
    model.listenerCalls.fetch_add(1);
    innermostCall = this;
    present = model.listener();
}

GenericPlugin::ListenerCall::~ListenerCall() {
    innermostCall = outer;
    model.listenerCalls.fetch_sub(1);
}

int GenericPlugin::ListenerCall::onThisThread(const GenericPlugin& plugin) {
    int count = 0;
    for (const ListenerCall* call = innermostCall; call; call = call->outer) count += &call->model == &plugin;
    return count;
}

GenericPlugin::GenericPlugin(ChannelLayout layout)
    : GenericPluginBase(layout), ownerThread(std::this_thread::get_id()) {
    groupNames.emplace_back();
}

GenericPlugin::~GenericPlugin() {
    if (statics_) leaveProcess();
}

void GenericPlugin::initialize(std::vector<AbstractPluginParameter*> interfaceParameters) {
    eventQueue_ = std::make_unique<ModelEventQueue>(parameterCount());
    eventQueue_->event.setHandler(this, &GenericPlugin::onQueuedEvent);
    interfaceList.emplace(*this, presetMagic(), std::move(interfaceParameters));
    presetList.emplace(*this, presetMagic());
    buildSources();
    joinProcess();
    loadDefaultPreset();
    for (AbstractPluginParameter* parameter : parameters) parameter->applyValue(parameter->value());
    parameterHook(kAllParameters);
}

void GenericPlugin::joinProcess() {
    const std::lock_guard section(process().section);
    if (process().instances == 0) process().statics = createStatics();
    ++process().instances;
    statics_ = process().statics.get();
    settings_ = statics_->createSettings(interfaceSizes());
    const auto held = statics_->lock();
    statics_->controllers.changed.addHandler(this, &GenericPlugin::onControllersChanged);
}

void GenericPlugin::leaveProcess() {
    const std::lock_guard section(process().section);
    {
        const auto held = statics_->lock();
        statics_->controllers.changed.removeHandler(this, &GenericPlugin::onControllersChanged);
    }
    settings_.reset();
    if (--process().instances == 0) process().statics.reset();
}

std::unique_ptr<PluginStatics> GenericPlugin::createStatics() {
    return std::make_unique<PluginStatics>(Product{}, parameterCount(),
                                           static_cast<int>(extraTargets.size()));
}

int GenericPlugin::instanceCount() {
    const std::lock_guard section(process().section);
    return process().instances;
}

InterfaceSize GenericPlugin::limitSize(InterfaceSize wanted) const {
    return sizes().limit(settings_->interfaceLayout, wanted);
}

bool GenericPlugin::curveData(int /*kind*/, std::span<const float> /*values*/,
                              std::span<float> /*out*/) const {
    return false;
}

std::string GenericPlugin::defaultPresetName() const {
    return processingMode == 1 ? "Default Setting" : "Default Sound";
}

int GenericPlugin::interfaceWidth() const {
    return settings_->interfaceSize().width;
}

int GenericPlugin::interfaceHeight() const {
    return settings_->interfaceSize().height;
}

// Parameters

void GenericPlugin::beginChange() {
    changeBlocks.fetch_add(1);
}

void GenericPlugin::endChange() {
    if (changeBlocks.fetch_sub(1) != 1) return;
    const bool reset = presetLoaded.exchange(false);
    if (!changePending.exchange(false)) return;
    tellAdapter(ModelEventQueue::Parameter, reset ? ModelEventQueue::kAllWithReset : ModelEventQueue::kAll);
    notifyListener(ParameterChanged, kAllParameters);
}

void GenericPlugin::parameterChanged(int index, float value, int flags) {
    parameterAt(index)->applyValue(value);
    parameterHook(index);
    markModified();
    if (changeBlocks.load() != 0) {
        changePending.store(true);
        // A block that ended in between may not have seen the mark.
        if (changeBlocks.load() != 0) return;
    }
    if (!(flags & kFromHost)) tellAdapter(ModelEventQueue::Parameter, index);
    notifyListener(ParameterChanged, index);
}

std::vector<float> GenericPlugin::parameterValues() const {
    std::vector<float> values;
    values.reserve(parameters.size());
    for (const AbstractPluginParameter* parameter : parameters) values.push_back(parameter->value());
    return values;
}

void GenericPlugin::setSampleRate(float rate) {
    sampleRate_.store(rate);
    updateLatency();
}

void GenericPlugin::setLatency(int samples) {
    if (latency_.exchange(samples) != samples) tellAdapter(ModelEventQueue::Latency, 0);
}

// Events

void GenericPlugin::tellAdapter(ModelEventQueue::Kind kind, int value) {
    if (!adapter_) return;
    if (onOwnerThread()) {
        perform(kind, value);
    } else {
        eventQueue_->post(kind, value);
    }
}

void GenericPlugin::onQueuedEvent(void*) {
    perform(eventQueue_->kind, eventQueue_->value);
}

void GenericPlugin::perform(int kind, int value) {
    switch (kind) {
        case ModelEventQueue::Program:
            return programRequested(value >> 8, value & 0xFF);
        case ModelEventQueue::LearnedController:
            return notifyListener(ControllerMoved, value);
        default:
            break;
    }
    if (!adapter_) return;
    switch (kind) {
        case ModelEventQueue::Latency:
            return adapter_->reportLatency();
        case ModelEventQueue::PresetName:
            return adapter_->presetNameChanged();
        case ModelEventQueue::Parameter:
            return adapter_->parameterUpdated(value < 0 ? kAllParameters : value,
                                              value == ModelEventQueue::kAllWithReset);
        default:
            return;
    }
}

int GenericPlugin::pumpEvents() {
    if (!onOwnerThread()) return 0;
    const std::lock_guard held(ownerMutex);
    return onOwnerThread() ? eventQueue_->deliver() : 0;
}

bool GenericPlugin::claim() {
    const std::lock_guard held(ownerMutex);
    if (!listener()) ownerThread.store(std::this_thread::get_id());
    return onOwnerThread();
}

void GenericPlugin::notifyListener(int code, int value) {
    const ListenerCall call(*this);
    if (Listener* present = call.listener()) present->onEvent(code, value);
}

void GenericPlugin::setListener(Listener* newListener) {
    {
        const std::lock_guard held(ownerMutex);
        if (newListener) {
            ownerThread.store(std::this_thread::get_id());
            listenerAttaching.store(true);
        }
        listener_.store(newListener);
    }
    while (listenerCalls.load() > ListenerCall::onThisThread(*this))
        std::this_thread::sleep_for(kListenerPoll);
}

// What the interface does

void GenericPlugin::interfaceOpened() {
    compareStates_.initialize();
    undoHistory_.storeInitial("Initial state");
}

void GenericPlugin::gesture(int parameterIndex, Gesture phase) {
    if (phase == Gesture::Change) markModified();
    if (phase == Gesture::End && undoHistory_.differsFromCurrent()) takeSnapshot(parameterIndex);
}

void GenericPlugin::takeSnapshot(int parameterIndex) {
    undoHistory_.push("");
    compareStates_.markModified();
    if (parameterIndex >= 0) storeInterfaceDefault(parameterIndex);
}

void GenericPlugin::restoreState(const State& state) {
    {
        const ChangeBlock block(*this);
        const std::size_t count = std::min(state.values.size(), parameters.size());
        for (std::size_t i = 0; i < count; ++i) parameters[i]->setValue(state.values[i], 0);
        presetLoaded.store(true);
    }
    const bool otherPreset = presetState_.values().path != state.preset.path;
    presetState_.set(state.preset);
    if (otherPreset) {
        tellAdapter(ModelEventQueue::PresetName, 0);
        notifyListener(PresetChanged, 0);
    }
    {
        const std::lock_guard held(extraMutex);
        extraState_ = state.extra;
    }
    notifyListener(ExtraStateReplaced, 0);
}

std::vector<std::uint8_t> GenericPlugin::extraState() const {
    const std::lock_guard held(extraMutex);
    return extraState_;
}

void GenericPlugin::toggleCompare() {
    compareStates_.initialize();
    const int other = (compareStates_.current() + 1) % CompareStates::kSlots;
    compareStates_.switchTo(other);
    restoreState(compareStates_.state(other));
    undoHistory_.push("");
}

void GenericPlugin::receive(const std::uint8_t message[3]) {
    if (adapter_) adapter_->sendMidi({message[0], message[1], message[2]});
}

// Controller map

bool GenericPlugin::loadMidiMap() {
    const auto held = statics_->lock();
    return !statics_->controllerMap.empty() && statics_->controllers.load(statics_->controllerMap);
}

void GenericPlugin::loadDefaultMidiMap() {
    const auto held = statics_->lock();
    statics_->controllers.clear();
}

bool GenericPlugin::saveMidiMap() {
    const auto held = statics_->lock();
    return !statics_->controllerMap.empty() && statics_->controllers.save(statics_->controllerMap);
}

void GenericPlugin::onControllersChanged(void*) {
    if (adapter_) adapter_->midiMapChanged();
    notifyListener(ControllerMapChanged, 0);
}

}  // namespace vanta
