#include "plugin/model/generic_plugin.hpp"

#include <algorithm>
#include <utility>

#include "plugin/parameters/abstract_plugin_parameter.hpp"
#include "plugin/presets/collection_preset_loader.hpp"

namespace vanta {

GenericPlugin::GenericPlugin(ChannelLayout layout) : PluginDescription(layout) {
    groupNames.emplace_back();
}

GenericPlugin::~GenericPlugin() {
    if (!statics_) return;
    const auto section = SharedStatics::constructionLock();
    {
        const auto held = statics().lock();
        statics().controllers.changed.removeHandler(this, &GenericPlugin::onControllersChanged);
    }
    settings_.reset();
    statics_.reset();
}

void GenericPlugin::initialize(std::vector<AbstractPluginParameter*> interfaceParameters) {
    eventQueue_.emplace(parameterCount());
    levels_.emplace(LevelCounts{.channels = channelCount(channelLayout),
                                .audio = audioSourceCount,
                                .levelsPerChannel = levelSourcesPerChannel,
                                .globalLevels = globalLevelSources,
                                .spectra = spectrumSourceCount});
    joinProcess();
    presets_.emplace(
        static_cast<Client&>(*this), ParameterFileList(*this, presetMagic()), presetVersion(),
        InterfaceDefaults(ParameterFileList(*this, presetMagic(), std::move(interfaceParameters)),
                          statics().interfaceDefaults, presetVersion()),
        presetState_, statics());
    presets_->loadInitial(defaultPresetName());
    for (AbstractPluginParameter* parameter : parameters) parameter->applyValue(parameter->value());
    parameterHook(kAllParameters);
}

void GenericPlugin::joinProcess() {
    const auto section = SharedStatics::constructionLock();
    statics_.emplace([this] { return createStatics(); });
    settings_ = statics().createSettings(interfaceSizes());
    const auto held = statics().lock();
    statics().controllers.changed.addHandler(this, &GenericPlugin::onControllersChanged);
}

std::unique_ptr<PluginStatics> GenericPlugin::createStatics() {
    return std::make_unique<PluginStatics>(Product{}, parameterCount(),
                                           static_cast<int>(extraTargets.size()));
}

template <typename Event>
void GenericPlugin::tellHost(const Event& event) {
    if (!adapter_) return;
    if (owner_.isThisThread()) {
        perform(event);
    } else {
        eventQueue_->post(event);
    }
}

// Parameters

void GenericPlugin::endChange() {
    const ChangeBlocks::Update update = changeBlocks_.end();
    if (update == ChangeBlocks::Update::None) return;
    if (update == ChangeBlocks::Update::ToAll && adapter_) adapter_->sendAllParameters(false);
    tellHost(ParameterUpdated{});
    owner_.notify(ParameterChanged{});
}

void GenericPlugin::parameterChanged(int index, float value, int flags) {
    parameterAt(index)->applyValue(value);
    parameterHook(index);
    if (flags & kFromState) return;
    markModified();
    if (!changeBlocks_.note()) return;
    if (!(flags & kFromHost)) tellHost(ParameterUpdated{index});
    owner_.notify(ParameterChanged{index});
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
    if (latency_.exchange(samples) != samples) tellHost(LatencyChanged{});
}

// Presets and states

bool GenericPlugin::loadFile(const std::string& path) {
    return loadCollection(presets_->all(), path, presetVersion());
}

bool GenericPlugin::savePreset(const PresetEntry& entry, int first, int count) {
    return presets_->save(entry, first, count);
}

void GenericPlugin::setPresetName(const std::string& name, int length) {
    presets_->setName(name, length);
}

void GenericPlugin::markModified() {
    if (presetState_.markModified()) owner_.notify(PresetChanged{});
}

void GenericPlugin::valuesReplaced() {
    changeBlocks_.sendingAll();
    if (adapter_) adapter_->sendAllParameters(true);
}

void GenericPlugin::presetReplaced(bool hostKnows) {
    if (!hostKnows) tellHost(PresetNameChanged{});
    owner_.notify(PresetChanged{});
}

State GenericPlugin::captureState() const {
    State state;
    state.preset = presetState_.values();
    state.values = parameterValues();
    state.extra = extraState();
    return state;
}

void GenericPlugin::restoreState(State state) {
    {
        const ChangeBlock block(*this);
        // The processor first: whatever changes there from now on is newer than the state.
        if (adapter_) adapter_->sendState(state.values);
        const std::size_t count = std::min(state.values.size(), parameters.size());
        for (std::size_t i = 0; i < count; ++i) parameters[i]->setValue(state.values[i], kFromState);
        changeBlocks_.markSent();
    }
    if (presetState_.set(std::move(state.preset))) presetReplaced(false);
    {
        const std::lock_guard held(extraMutex_);
        extraState_ = std::move(state.extra);
    }
    owner_.notify(ExtraStateReplaced{});
}

std::vector<std::uint8_t> GenericPlugin::extraState() const {
    const std::lock_guard held(extraMutex_);
    return extraState_;
}

// Controller map

bool GenericPlugin::loadMidiMap() {
    const auto held = statics().lock();
    return !statics().controllerMap.empty() && statics().controllers.load(statics().controllerMap);
}

void GenericPlugin::loadDefaultMidiMap() {
    const auto held = statics().lock();
    statics().controllers.clear();
}

bool GenericPlugin::saveMidiMap() {
    const auto held = statics().lock();
    return !statics().controllerMap.empty() && statics().controllers.save(statics().controllerMap);
}

void GenericPlugin::onControllersChanged(void*) {
    if (adapter_) adapter_->midiMapChanged();
    // Whoever edits the map holds the lock of what instances share, which no listener may be called under.
    eventQueue_->post(ControllerMapChanged{});
}

// The interface

void GenericPlugin::setListener(Listener* listener) {
    if (listener) levels_->beginAnew();
    owner_.setListener(listener);
}

void GenericPlugin::interfaceOpened() {
    compareStates_.initialize();
    undoHistory_.storeInitial("Initial state");
}

void GenericPlugin::gesture(int parameterIndex, Gesture phase) {
    if (phase == Gesture::Begin) undoHistory_.ensureInitial();
    if (phase == Gesture::Change) markModified();
    if (phase == Gesture::End && undoHistory_.differsFromCurrent()) takeSnapshot(parameterIndex);
}

void GenericPlugin::takeSnapshot(int parameterIndex) {
    undoHistory_.push("");
    compareStates_.markModified();
    if (parameterIndex >= 0) presets_->interfaceDefaults().store(*parameterAt(parameterIndex));
}

void GenericPlugin::toggleCompare() {
    undoHistory_.ensureInitial();
    compareStates_.initialize();
    const int other = compareStates_.other();
    State state = compareStates_.state(other);
    compareStates_.switchTo(other);
    restoreState(std::move(state));
    undoHistory_.push("");
}

InterfaceSize GenericPlugin::limitSize(InterfaceSize size) const {
    return settings_->sizes().limit(settings_->interfaceLayout, size);
}

// The host

int GenericPlugin::pumpEvents() {
    const auto performEach = [this](const ModelEvent& event) {
        std::visit([this](const auto& due) { perform(due); }, event);
    };
    return owner_.runAsOwner([&] { return eventQueue_->deliver(performEach); });
}

void GenericPlugin::receive(const std::uint8_t message[3]) {
    if (adapter_) adapter_->sendMidi({message[0], message[1], message[2]});
}

void GenericPlugin::perform(const LatencyChanged&) {
    if (adapter_) adapter_->reportLatency();
}

void GenericPlugin::perform(const PresetNameChanged&) {
    if (adapter_) adapter_->presetNameChanged();
}

void GenericPlugin::perform(const ParameterUpdated& update) {
    if (adapter_) adapter_->parameterUpdated(update.index.value_or(kAllParameters));
}

}  // namespace vanta
