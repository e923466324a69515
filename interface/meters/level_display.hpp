#pragma once

#include <vector>

#include "gui/animation/animated_control.hpp"
#include "gui/animation/animator.hpp"

namespace vanta::interface {

enum class Orientation { Horizontal, Vertical };

/// How far along its scale a display shows a level: a pair of inverse functions, in dB.
struct LevelCurve {
    float (*toDisplay)(float);
    float (*fromDisplay)(float);
    bool operator==(const LevelCurve&) const = default;
};

/// The scale is linear.
inline constexpr LevelCurve kStraightCurve{[](float level) { return level; },
                                           [](float level) { return level; }};

/// A control that shows levels as positions, and moves with every frame.
class LevelDisplay : public gui::AnimatedControl, public gui::AnimatedObject {
public:
    /// Linear goes from `minimum` to `maximum` over the whole of the control.
    enum class LevelDomain { Decibel, Linear };

    /// Who has to know when levels lie elsewhere, such as the grid of a display.
    class MappingObserver {
    public:
        virtual void mappingChanged() = 0;
        /// It is not to be touched any more.
        virtual void displayGone() = 0;

    protected:
        ~MappingObserver() = default;
    };

    /// Without an animator it stands still.
    explicit LevelDisplay(gui::UserInterface& interface, gui::Animator* animatedBy = nullptr);
    ~LevelDisplay() override;

    Property<LevelDomain> domain{this, LevelDomain::Decibel};
    Property<float> maximum{this, 1.0f};
    Property<float> minimum{this, -1.0f};
    Property<Orientation> orientation{this, Orientation::Vertical};
    /// Logical units for each dB of the curve.
    Property<float> scale{this, 4.0f};
    /// Where level 0 lies, in logical units.
    Property<float> offset{this, 0.0f};
    Property<LevelCurve> curve{this, kStraightCurve};

    /// In logical units, from the left or the top of the control.
    float levelToPosition(float level) const;
    float positionToLevel(float position) const;

    void addMappingObserver(MappingObserver& observer) { observers_.push_back(&observer); }
    void removeMappingObserver(const MappingObserver& observer);

    void animate() override {}
    /// The tree owns it, not the animator.
    void deleteSelf() override {}
    void resized() override;
    void propertyChanged(AbstractProperty& property) override;

private:
    void tellObservers();

    std::vector<MappingObserver*> observers_;
};

}  // namespace vanta::interface
