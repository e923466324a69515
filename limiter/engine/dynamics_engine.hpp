#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "dsp/convolver/convolver_plan.hpp"
#include "foundation/lock_free_fifo.hpp"
#include "foundation/notify_event.hpp"
#include "foundation/realtime.hpp"
#include "limiter/engine/staged_control.hpp"
#include "limiter/modulation/modulation_matrix.hpp"
#include "limiter/styles/engine_layout.hpp"
#include "limiter/styles/style_values.hpp"
#include "plugin/base/generic_parameter_owner.hpp"
#include "wave/environment.hpp"

namespace vanta {

class SmoothingKernel;

/// The modular dynamics processor: a table of 749 values, a modulation matrix, and one Processor a channel
/// whose elements and connections those values set. A style is one set of the values.
///
/// A value exists twice: `setValue` of a parameter moves it at once, on the caller's thread; its effect
/// follows on the audio thread, through a queue that `applyPendingParameters` drains. So whoever sets many
/// values within a drain gives them effect together, after it.
class DynamicsEngine final : public GenericParameterResponder {
public:
    class AbstractStereoLinker;
    class BandSplitter;
    class StereoLinkerFactory;
    class Parameters;
    class Processor;
    class VCA;

    /// The matrix lives in the environment of the processors, the oversampled one.
    DynamicsEngine(const EngineLayout& layout, ModulationMatrix& matrix);
    ~DynamicsEngine() override;

    /// The shape of the matrix that this layout needs.
    static ModulationLayout modulationLayout(const EngineLayout& layout);

    /// Set-up, once: stereo linkers, main controls as sources, kernels.
    void attach(StereoLinkerFactory& factory);

    /// Reads a style resource. Result: its index in the order of loading. A resource that cannot be read
    /// keeps its place with all values 0.
    int loadStyle(const std::string& resourceName);
    /// The same with values in table order.
    int addStyle(std::vector<float> values);
    /// Sets all parameters from a style. One thread at a time, or the styles mix.
    VANTA_REALTIME void applyStyle(int index);
    StyleValues styleValues(int index) const { return {styles_[static_cast<std::size_t>(index)]}; }

    /// At start-up: gives every parameter its effect.
    void applyAllParameters();
    /// Gives effect to what is queued by now.
    VANTA_REALTIME void applyPendingParameters();

    // GenericParameterOwner
    void beginChange() override {}
    void endChange() override {}
    int parameterCount() const override;
    AbstractPluginParameter* parameterAt(int index) const override;
    int firstParameterIndex() const override { return 0; }
    void parameterChanged(int index, float value, int flags) override;
    int addParameter(AbstractPluginParameter& parameter) override;
    int addGroupName(const std::string&) override { return 0; }

    const EngineLayout& layout() const { return layout_; }
    Parameters& parameters() const { return *parameters_; }
    ModulationMatrix& matrix() const { return matrix_; }
    wave::Environment& environment() const { return matrix_.environment(); }
    AbstractStereoLinker& linker(int detector) const { return *linkers_[static_cast<std::size_t>(detector)]; }
    /// The course that a control takes part in if the knobs that move look-ahead move it too, and no signal
    /// does; else null.
    VANTA_REALTIME LookAheadCourse* courseOf(int target);
    /// The first lead that takes part sets the pace.
    VANTA_REALTIME void offerLead(const StagedControl& lead);
    /// Samples of delay of every Convolver.
    int convolverLatency() const { return kernelPlan_->latency(); }
    std::span<const std::unique_ptr<SmoothingKernel>> kernels() const { return kernels_; }
    std::span<Processor* const> processors() const { return processors_; }

private:
    friend class Processor;

    void rebuildKernels();
    void onSampleRateChanged(void*);
    void bindKernel(int index, SmoothingKernel& kernel);
    void planCourse();
    VANTA_REALTIME void followWiring();
    VANTA_REALTIME void orderLookAhead();
    int shapePosition(int convolver) const;

    const EngineLayout& layout_;
    ModulationMatrix& matrix_;
    std::vector<AbstractPluginParameter*> table_;
    std::unique_ptr<Parameters> parameters_;
    LockFreeFifo queue_;
    std::atomic<bool> reapplyAll_{false};  ///< a change found the queue full
    std::vector<std::unique_ptr<AbstractStereoLinker>> linkers_;
    std::unique_ptr<ConvolverPlan> kernelPlan_;
    std::vector<std::unique_ptr<SmoothingKernel>> kernels_;
    std::vector<std::unique_ptr<StagedControl>> windows_;  ///< of the kernels
    LookAheadCourse course_;
    std::uint32_t lookAheadKnobs_ = 0;  ///< main controls, as bits of the matrix's origins
    std::uint32_t orderedWiring_ = 0;   ///< the wiring for which they were looked up
    std::vector<Processor*> processors_;
    std::vector<std::vector<float>> styles_;
};

}  // namespace vanta
