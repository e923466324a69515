#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "limiter/modulation/modulation_layout.hpp"
#include "wave/float_parameter.hpp"
#include "wave/producer.hpp"

namespace vanta {

/// The wiring of the dynamics engine. A slot takes a source, multiplies it with a level, which is itself a
/// target, and adds the result to a target. A slot that would close a loop stays off. What all voices share
/// is computed once, in the global producers; a voice adds what differs. Audio thread, except for
/// construction.
class ModulationMatrix final : public wave::Component {
public:
    class Controller;
    class VoiceMatrix;
    class GlobalModulationProducer;
    class GlobalTargetController;

    enum class SlotMode { Off, Global, PerVoice };

    /// The layout is copied.
    ModulationMatrix(wave::Environment& environment, ModulationLayout layout);
    ~ModulationMatrix();

    /// Set-up: one voice per channel. The first one feeds what is global but depends on a voice.
    VoiceMatrix& createVoice();
    /// Set-up: a source that all voices share.
    void setGlobalSource(int source, wave::Producer& producer);
    /// Set-up: what a global reader of a target reads, made at the first call.
    wave::Producer& globalTarget(int target);

    /// Brackets a batch of changes: slots are connected once, when the outermost bracket closes.
    VANTA_REALTIME void beginUpdate() { ++updateDepth_; }
    VANTA_REALTIME void endUpdate();

    /// Counts the changes of what is connected.
    std::uint32_t wiringChanges() const { return wiringChanges_; }
    /// The sources without inputs that have an influence on a target: signals and main controls. Bit s stands
    /// for source s, of those below 32.
    VANTA_REALTIME std::uint32_t originsOf(int target);

    /// The value that a parameter gives a target, before modulation and before the factor of a slot's level.
    VANTA_REALTIME void setBaseValue(int target, float value);
    Controller& controller();

    const ModulationLayout& layout() const { return layout_; }
    SlotMode slotMode(int slot) const { return slots_[static_cast<std::size_t>(slot)].mode; }

private:
    class InternalController;
    class TargetSum;
    struct SlotState;
    struct TargetState;

    enum UpdateFlags { kKeepConnected = 1, kRefreshLevel = 2, kRefreshTarget = 4 };

    struct SlotState {
        int index = 0;
        bool inverted = false;
        bool bypassed = false;
        bool pending = false;
        int levelTarget = 0;
        int source = -1;
        int target = -1;
        SlotMode mode = SlotMode::Off;
    };

    struct TargetState {
        std::vector<SlotState*> slots;     ///< in the order of connection
        SlotState* levelOfSlot = nullptr;  ///< the slot whose level this target is
        const TargetRange* range = nullptr;
        float scale = 1.0f;  ///< the factor of the slot whose level this is
        float lowLimit = 0.0f;
        float highLimit = 1.0f;
        float baseValue = 0.0f;
        std::unique_ptr<wave::FloatParameter> base;  ///< `scale` times `baseValue`; none for an audio target
        bool allGlobal = true;                       ///< no feeding slot differs between the voices
        std::unique_ptr<GlobalModulationProducer> producer;
        std::unique_ptr<GlobalTargetController> globalController;
    };

    TargetState& target(int index) { return targets_[static_cast<std::size_t>(index)]; }
    bool isAudio(const TargetState& state) const { return state.range && state.range->isAudio; }
    GlobalModulationProducer& globalProducer(int target);

    void updateSlot(SlotState& slot, int flags);
    void updateOffSlots(const SlotState* except);
    bool canConnect(const SlotState& slot);
    void visitUpstream(const SlotState& slot);
    std::uint32_t collectOrigins(int target);
    SlotMode modeWhenConnected(const SlotState& slot);
    void refreshLevel(SlotState& slot);
    void refreshAllGlobal(TargetState& state);
    void setLimits(TargetState& state);
    void moveSlot(SlotState& slot, int newTarget);

    ModulationLayout layout_;
    std::vector<wave::Producer*> globalSources_;
    std::vector<TargetState> targets_;
    std::vector<SlotState> slots_;
    std::vector<std::unique_ptr<VoiceMatrix>> voices_;
    std::unique_ptr<InternalController> internalController_;
    std::vector<char> visited_;  ///< one per target, the walk's memory
    std::uint32_t wiringChanges_ = 0;
    int updateDepth_ = 0;
    bool dirty_ = false;
};

/// Through which the slots of a matrix are read and written. -1 means no source or no target.
class ModulationMatrix::Controller {
public:
    virtual ~Controller() = default;
    virtual bool isBypassed(int slot) const = 0;
    virtual bool isInverted(int slot) const = 0;
    virtual float level(int slot) const = 0;
    virtual int source(int slot) const = 0;
    virtual int target(int slot) const = 0;
    virtual void setBypassed(int slot, bool bypassed) = 0;
    virtual void setInverted(int slot, bool inverted) = 0;
    virtual void setLevel(int slot, float level) = 0;
    virtual void setSource(int slot, int source) = 0;
    virtual void setTarget(int slot, int target) = 0;
    /// Set-up and tests: allocate their result.
    virtual std::vector<int> slotsInto(int target) const = 0;
    virtual std::vector<int> slotsFrom(int source) const = 0;
};

}  // namespace vanta
