#include "limiter/engine/dynamics_engine.hpp"

#include <algorithm>

#include "dsp/convolver/smoothing_kernel.hpp"
#include "foundation/binary_data.hpp"
#include "foundation/numbers.hpp"
#include "limiter/engine/dynamics_processor.hpp"
#include "limiter/engine/engine_parameters.hpp"
#include "limiter/engine/stereo_linker.hpp"
#include "limiter/latency/signal_path_delays.hpp"
#include "limiter/styles/style_record.hpp"
#include "plugin/presets/preset_preloader.hpp"

namespace vanta {

namespace {

constexpr std::uint32_t kSignalOrigins = 1u << kAudioInputSource | 1u << kTriggerInputSource;

}  // namespace

ModulationLayout DynamicsEngine::modulationLayout(const EngineLayout& layout) {
    ModulationLayout result;
    result.limitsSignals = layout.configuration().limitsSignals;
    result.elementTargetCount = layout.elementTargetCount();
    result.slotCount = layout.configuration().slotCount;
    for (const EngineSource& source : layout.sources()) {
        result.sources.push_back({static_cast<int>(source.kind), source.inputs});
    }
    for (int control = 0; control < kOutputTarget; ++control) {
        result.sources[static_cast<std::size_t>(kFirstMainSource + control)].control = control;
    }
    result.ranges.assign(layout.ranges().begin(), layout.ranges().end());
    for (const EngineTarget& target : layout.targets()) {
        result.rangeOf.push_back(static_cast<int>(target.range));
    }
    return result;
}

DynamicsEngine::DynamicsEngine(const EngineLayout& layout, ModulationMatrix& matrix)
    : layout_(layout), matrix_(matrix), queue_(8192) {
    parameters_ = std::make_unique<Parameters>(*this);
    environment().sampleRateChanged.addHandler(this, &DynamicsEngine::onSampleRateChanged);
}

DynamicsEngine::~DynamicsEngine() {
    environment().sampleRateChanged.removeHandler(this, &DynamicsEngine::onSampleRateChanged);
}

void DynamicsEngine::attach(StereoLinkerFactory& factory) {
    for (int i = 0; i < layout_.group(ElementKind::Detector).built; ++i) {
        linkers_.push_back(factory.createStereoLinker());
    }
    for (int control = 0; control < kOutputTarget; ++control) {
        matrix_.setGlobalSource(kFirstMainSource + control, matrix_.globalTarget(control));
    }
    rebuildKernels();
}

void DynamicsEngine::onSampleRateChanged(void*) {
    rebuildKernels();
}

void DynamicsEngine::rebuildKernels() {
    const ElementGroup& group = layout_.group(ElementKind::Convolver);
    const double limitMs = layout_.configuration().convolverLimit;
    // The Convolvers of all channels stand on the old kernels and go first.
    for (Processor* processor : processors_) processor->dropConvolvers();
    for (std::size_t i = 0; i < kernels_.size(); ++i) {
        parameters_->release(shapePosition(static_cast<int>(i)), kernels_[i]->shape);
    }
    kernels_.clear();
    windows_.clear();
    kernelPlan_ = std::make_unique<ConvolverPlan>(1 + samplesInMs(limitMs, environment().sampleRate()),
                                                  kConvolverSamples);
    for (int i = 0; i < group.built; ++i) {
        kernels_.push_back(std::make_unique<SmoothingKernel>(environment(), *kernelPlan_));
        bindKernel(i, *kernels_.back());
    }
    planCourse();
    for (Processor* processor : processors_) processor->rebuildConvolvers();
    orderLookAhead();
}

// The lead begins to move when the longer of two kernels is no longer heard by a gain that is delayed as far
// as it can be. By then a longer hold has passed through what lies between it and the audio, too, and a new
// detection delay has faded in: the kernel alone takes two fades, and the look-ahead limit is a quarter of
// one.
void DynamicsEngine::planCourse() {
    const double rate = environment().sampleRate();
    course_.fade = samplesInMs(ConvolverPlan::kFadeMs, rate);
    course_.turn = samplesInMs(layout_.configuration().lookAheadLimit, rate) + 2 * course_.fade;
    for (const auto& kernel : kernels_) {
        course_.turn = std::max(course_.turn, samplesInMs(layout_.configuration().lookAheadLimit, rate) +
                                                  kernel->replacementSamples());
    }
    course_.period = course_.turn + 2 * course_.fade;
}

void DynamicsEngine::followWiring() {
    if (orderedWiring_ != matrix_.wiringChanges()) orderLookAhead();
}

void DynamicsEngine::orderLookAhead() {
    constexpr ElementKind kind = ElementKind::Vca;
    orderedWiring_ = matrix_.wiringChanges();
    lookAheadKnobs_ = 0;
    for (int i = 0; i < layout_.group(kind).built; ++i) {
        const std::uint32_t origins =
            matrix_.originsOf(layout_.targetIndex(kind, i, inputIndex(kind, "Look-ahead")));
        if (!(origins & kSignalOrigins)) lookAheadKnobs_ |= origins;
    }
    course_.lead = nullptr;
    for (Processor* processor : processors_) processor->orderLookAhead();
    for (const auto& window : windows_) window->follow(courseOf(window->target()));
}

void DynamicsEngine::offerLead(const StagedControl& lead) {
    if (!course_.lead) course_.lead = &lead;
}

LookAheadCourse* DynamicsEngine::courseOf(int target) {
    const std::uint32_t origins = matrix_.originsOf(target);
    return !(origins & kSignalOrigins) && (origins & lookAheadKnobs_) ? &course_ : nullptr;
}

int DynamicsEngine::shapePosition(int convolver) const {
    static_assert(choicesAre(ElementKind::Convolver, "Shape",
                             {{"Triangle", SmoothingKernel::Triangle},
                              {"Polynome", SmoothingKernel::Polynome},
                              {"Sine", SmoothingKernel::Sine},
                              {"Classic", SmoothingKernel::Classic}}));
    return layout_.position(ElementKind::Convolver, convolver,
                            parameterIndex(ElementKind::Convolver, "Shape"));
}

// One kernel serves all channels, so its controls are read outside of the voices.
void DynamicsEngine::bindKernel(int index, SmoothingKernel& kernel) {
    constexpr ElementKind kind = ElementKind::Convolver;
    const auto control = [&](int input) -> wave::Producer* {
        return &matrix_.globalTarget(layout_.targetIndex(kind, index, input));
    };
    const int window = layout_.targetIndex(kind, index, inputIndex(kind, "Window Size"));
    windows_.push_back(std::make_unique<StagedControl>(environment(), StagedControl::Window, window,
                                                       matrix_.globalTarget(window)));
    kernel.windowSize.setSource(windows_.back().get());
    kernel.smoothing.setSource(control(inputIndex(kind, "Smoothing")));
    kernel.offset.setSource(control(inputIndex(kind, "Offset")));
    kernel.power.setSource(control(inputIndex(kind, "Power")));
    const int position = shapePosition(index);
    kernel.shape = static_cast<int>(parameterAt(position)->value());
    parameters_->drive(position, kernel.shape);
}

int DynamicsEngine::loadStyle(const std::string& resourceName) {
    std::vector<float> values(static_cast<std::size_t>(parameterCount()), 0.0f);
    BinaryResourceReader reader(resourceName);
    PresetPreloader loader(*this, std::string(kStyleTag), values);
    if (!readPreset(loader, reader, kStyleVersion)) std::fill(values.begin(), values.end(), 0.0f);
    return addStyle(std::move(values));
}

int DynamicsEngine::addStyle(std::vector<float> values) {
    styles_.push_back(std::move(values));
    return static_cast<int>(styles_.size()) - 1;
}

void DynamicsEngine::applyStyle(int index) {
    const StyleValues values = styleValues(index);
    for (int i = 0; i < parameterCount(); ++i) parameterAt(i)->setValue(values.at(i), 0);
}

int DynamicsEngine::parameterCount() const {
    return static_cast<int>(table_.size());
}

AbstractPluginParameter* DynamicsEngine::parameterAt(int index) const {
    return table_[static_cast<std::size_t>(index)];
}

int DynamicsEngine::addParameter(AbstractPluginParameter& parameter) {
    table_.push_back(&parameter);
    return parameterCount() - 1;
}

void DynamicsEngine::parameterChanged(int index, float value, int) {
    if (!queue_.push(LockFreeFifo::Item::of(index, value))) reapplyAll_.store(true);
}

void DynamicsEngine::applyPendingParameters() {
    if (std::uint32_t pending = queue_.sizeEstimate(); pending > 0) {
        environment().noteChange();
        matrix_.beginUpdate();
        LockFreeFifo::Item change{};
        for (; pending > 0 && queue_.pop(change); --pending) {
            parameterAt(change.index())->applyValue(change.value());
        }
        matrix_.endUpdate();
        followWiring();
    }
    // Last, for what the queue holds is older than what it had no room for.
    if (reapplyAll_.load(std::memory_order_relaxed) && reapplyAll_.exchange(false)) applyAllParameters();
}

void DynamicsEngine::applyAllParameters() {
    environment().noteChange();
    matrix_.beginUpdate();
    for (AbstractPluginParameter* parameter : table_) parameter->applyValue(parameter->value());
    matrix_.endUpdate();
    followWiring();
}

}  // namespace vanta
