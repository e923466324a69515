#include "limiter/engine/dynamics_engine.hpp"

#include "dsp/convolver/smoothing_kernel.hpp"
#include "foundation/binary_data.hpp"
#include "foundation/numbers.hpp"
#include "limiter/engine/dynamics_processor.hpp"
#include "limiter/engine/engine_inputs.hpp"
#include "limiter/engine/engine_parameters.hpp"
#include "limiter/engine/stereo_linker.hpp"
#include "limiter/styles/style_record.hpp"
#include "plugin/presets/preset_preloader.hpp"

namespace vanta {

namespace {

constexpr int kKernelBase = 256;

}  // namespace

ModulationLayout DynamicsEngine::modulationLayout(const EngineLayout& layout) {
    ModulationLayout result;
    result.elementTargetCount = layout.elementTargetCount();
    result.slotCount = layout.configuration().slotCount;
    for (const EngineSource& source : layout.sources()) {
        result.sources.push_back({static_cast<int>(source.kind), source.inputs});
    }
    for (const EngineRange& range : layout.ranges()) {
        TargetRange target{range.defaultFactor, range.isAudio, range.minimum, range.maximum, {}};
        for (const auto& factor : range.factors)
            target.factors.emplace_back(factor.sourceType, factor.factor);
        result.ranges.push_back(std::move(target));
    }
    for (const EngineTarget& target : layout.targets()) {
        result.rangeOf.push_back(static_cast<int>(target.range));
    }
    return result;
}

DynamicsEngine::DynamicsEngine(const EngineLayout& engineLayout, ModulationMatrix& modulationMatrix)
    : layout_(engineLayout), matrix_(modulationMatrix), queue(8192) {
    parameters_ = std::make_unique<Parameters>(*this);
    environment().sampleRateChanged.addHandler(this, &DynamicsEngine::onSampleRateChanged);
}

DynamicsEngine::~DynamicsEngine() {
    environment().sampleRateChanged.removeHandler(this, &DynamicsEngine::onSampleRateChanged);
}

void DynamicsEngine::attach(StereoLinkerFactory& factory) {
    for (int i = 0; i < layout_.group(ElementKind::Detector).built; ++i) {
        linkers.push_back(factory.createStereoLinker());
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
        parameters_->release(layout_.position(ElementKind::Convolver, static_cast<int>(i), kConvolverShape),
                             kernels_[i]->shape);
    }
    kernels_.clear();
    kernelPlan =
        std::make_unique<ConvolverPlan>(1 + samplesInMs(limitMs, environment().sampleRate()), kKernelBase);
    for (int i = 0; i < group.built; ++i) {
        kernels_.push_back(std::make_unique<SmoothingKernel>(environment(), *kernelPlan));
        bindKernel(i, *kernels_.back());
    }
    for (Processor* processor : processors_) processor->rebuildConvolvers();
}

// One kernel serves all channels, so its controls are read outside of the voices.
void DynamicsEngine::bindKernel(int index, SmoothingKernel& kernel) {
    const auto control = [&](int input) -> wave::Producer* {
        return &matrix_.globalTarget(layout_.targetIndex(ElementKind::Convolver, index, input));
    };
    kernel.windowSize.setSource(control(ConvolverInput::WindowSize));
    kernel.smoothing.setSource(control(ConvolverInput::Smoothing));
    kernel.offset.setSource(control(ConvolverInput::Offset));
    kernel.power.setSource(control(ConvolverInput::Power));
    const int position = layout_.position(ElementKind::Convolver, index, kConvolverShape);
    kernel.shape = static_cast<int>(parameterAt(position)->value());
    parameters_->drive(position, kernel.shape);
}

int DynamicsEngine::loadStyle(const std::string& resourceName) {
    std::vector<float> values(static_cast<std::size_t>(parameterCount()), 0.0f);
    BinaryResourceReader reader(resourceName);
    PresetPreloader loader(*this, std::string(kStyleTag), values);
    if (!readPreset(loader, reader, kStyleVersion)) std::fill(values.begin(), values.end(), 0.0f);
    styles.push_back(std::move(values));
    return static_cast<int>(styles.size()) - 1;
}

void DynamicsEngine::applyStyle(int index) {
    const auto& values = styles[static_cast<std::size_t>(index)];
    for (int i = 0; i < parameterCount(); ++i) {
        parameterAt(i)->setValue(values[static_cast<std::size_t>(i)], 0);
    }
}

int DynamicsEngine::parameterCount() const {
    return static_cast<int>(table.size());
}

AbstractPluginParameter* DynamicsEngine::parameterAt(int index) const {
    return table[static_cast<std::size_t>(index)];
}

int DynamicsEngine::addParameter(AbstractPluginParameter& parameter) {
    table.push_back(&parameter);
    return parameterCount() - 1;
}

void DynamicsEngine::parameterChanged(int index, float value, int) {
    if (!queue.push(LockFreeFifo::Item::of(index, value))) reapplyAll.store(true);
}

void DynamicsEngine::notePendingChanges() {
    pending = queue.sizeEstimate();
}

void DynamicsEngine::applyPendingParameters() {
    if (pending > 0) {
        matrix_.beginUpdate();
        LockFreeFifo::Item change{};
        for (; pending > 0 && queue.pop(change); --pending) {
            parameterAt(change.index())->applyValue(change.value());
        }
        matrix_.endUpdate();
    }
    // Last, for what the queue holds is older than what it had no room for.
    if (reapplyAll.load(std::memory_order_relaxed) && reapplyAll.exchange(false)) applyAllParameters();
}

void DynamicsEngine::applyAllParameters() {
    matrix_.beginUpdate();
    for (AbstractPluginParameter* parameter : table) parameter->applyValue(parameter->value());
    matrix_.endUpdate();
}

}  // namespace vanta
