#pragma once

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "limiter/styles/engine_range.hpp"

namespace vanta {

/// Values of a style record, of every configuration with the standard capacities and 80 slots.
inline constexpr int kStyleValueCount = 749;

// Positions of the values that the engine's owner reads and writes by themselves.
inline constexpr int kNumActiveInputsPosition = 0;
inline constexpr int kNumActiveMainSourcesPosition = 1;
inline constexpr int kFirstMainPosition = 2;

/// Position of the value of a main control or a stage count, by its name.
consteval int mainPosition(std::string_view name) {
    int position = kFirstMainPosition;
    for (const MainControlDescription& control : EngineTable::kMainControls) {
        if (control.parameter.name == name) return position;
        ++position;
    }
    const int index = indexByName(EngineTable::kStageCounts, name);
    if (index < 0) throw "EngineTable has no main control or stage count of this name";
    return position + index;
}

inline constexpr int kMainThresholdPosition = mainPosition("Main Threshold");
inline constexpr int kMainAttackPosition = mainPosition("Main Attack");
inline constexpr int kMainReleasePosition = mainPosition("Main Release");
inline constexpr int kCustom1Position = mainPosition("Custom 1");
inline constexpr int kCustom2Position = mainPosition("Custom 2");
inline constexpr int kLookAheadStagesPosition = mainPosition("Num Look-ahead Stages");
inline constexpr int kOutputConvolversPosition = mainPosition("Num Output Convolvers");
inline constexpr int kOutputSmartClippersPosition = mainPosition("Num Output SmartClippers");

inline constexpr int kAudioInputSource = 0;
inline constexpr int kTriggerInputSource = 1;
inline constexpr int kFirstMainSource = 2;  ///< Main Threshold; the other controls follow
/// The targets in front of Output are the main controls.
inline constexpr int kMainThresholdTarget = kMainThresholdPosition - kFirstMainPosition;
inline constexpr int kOutputTarget = static_cast<int>(EngineTable::kMainControls.size());

/// Order of a slot's parameters.
enum class SlotField { Source, Level, Bypassed, Inverted, Target };

/// One value of the engine's table.
struct EngineParameter {
    enum class Role { NumActive, MainControl, StageCount, Element };

    std::string name;                  ///< "Detector 2 Knee"
    ParameterDescription description;  ///< its limits are those of this table
    Role role;
    ElementKind kind;  ///< of what a NumActive counts, of a control or an element; Output for stage counts
    int element;       ///< from 0; -1 for NumActive and StageCount
    int target;        ///< index of the target whose base value it is; -1 for none
    std::span<const std::string> labels;  ///< by index; empty for floats and plain numbers
};

/// What a slot can take its signal from.
struct EngineSource {
    std::string name;         ///< "PeakHold 2"
    ElementKind kind;         ///< also the source type of the ranges
    int element;              ///< from 0; for Input 0 is the audio and 1 the trigger
    int output;               ///< 0, or 1 for a Crossover's second
    std::vector<int> inputs;  ///< targets that the element reads; empty for inputs and main controls
};

/// What a slot can feed.
struct EngineTarget {
    std::string name;  ///< "Det 2 Threshold"
    ElementKind kind;  ///< of a control, an element or Slot; Output for "Output"
    int element;       ///< from 0
    int input;         ///< of the element's inputs
    RangeId range;
};

/// Where one kind of element is in the tables.
struct ElementGroup {
    ElementKind kind;
    int capacity;
    int built;
    int numActivePosition;
    int firstPosition;  ///< of element 0's first parameter
    int firstSource;
    int firstTarget;
};

/// The engine's tables: every value that a style holds, in file order, and everything that a slot can
/// connect, by index. Pure data, built once from the configuration and never changed; labels and names
/// point into it, so it stays where it was built.
class EngineLayout {
public:
    explicit EngineLayout(const DynamicsEngineConfiguration& configuration);
    EngineLayout(const EngineLayout&) = delete;
    EngineLayout& operator=(const EngineLayout&) = delete;

    const DynamicsEngineConfiguration& configuration() const { return config_; }
    std::span<const EngineParameter> parameters() const { return parameterTable_; }
    std::span<const EngineSource> sources() const { return sourceTable_; }
    /// Those of elements first, then the slots' levels.
    std::span<const EngineTarget> targets() const { return targetTable_; }
    int elementTargetCount() const { return group(ElementKind::Slot).firstTarget; }
    /// By RangeId.
    std::span<const TargetRange> ranges() const { return rangeTable_; }
    const TargetRange& rangeOf(int target) const;

    /// `kind` is Filter to Vca, or Slot.
    const ElementGroup& group(ElementKind kind) const;
    /// Elements and parameters count from 0 throughout.
    int position(ElementKind kind, int element, int parameter) const;
    int slotPosition(int slot, SlotField field) const;
    int sourceIndex(ElementKind kind, int element, int output = 0) const;
    int targetIndex(ElementKind kind, int element, int input) const;

    std::optional<int> findParameter(std::string_view name) const;
    std::optional<int> findSource(std::string_view name) const;
    std::optional<int> findTarget(std::string_view name) const;

    /// The values of a new engine: nothing runs, nothing is connected.
    std::vector<float> defaultValues() const;

private:
    void addMainControls();
    void addElements(ElementKind kind);
    void addParameters(const ElementGroup& group);
    void addConnections(const ElementGroup& group);
    void addNumActive(std::string_view listName, ElementKind kind, int maximum, int defaultValue);
    void addParameter(std::string name, const ParameterDescription& description, EngineParameter::Role role,
                      ElementKind kind, int element, int target);
    void completeSlotLabels();

    DynamicsEngineConfiguration config_;
    std::vector<EngineParameter> parameterTable_;
    std::vector<EngineSource> sourceTable_;
    std::vector<EngineTarget> targetTable_;
    std::vector<TargetRange> rangeTable_;
    std::vector<ElementGroup> groups_;                   ///< from Filter on, Slot last
    std::vector<std::vector<std::string>> labelTables_;  ///< one per distinct list of labels
};

}  // namespace vanta
