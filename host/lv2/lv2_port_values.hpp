#pragma once

#include <atomic>
#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "foundation/realtime.hpp"
#include "host/lv2/lv2_control.hpp"

namespace vanta {

/// What the host says at the control ports. Ports are the host's: a parameter that MIDI or a program change
/// has moved leaves its port behind. So a port counts when it says something new, and only then.
class Lv2PortValues {
public:
    explicit Lv2PortValues(std::vector<Lv2Control> controls);

    const Lv2Control& control(std::size_t index) const { return controls_[index]; }
    void connect(std::size_t index, const float* port) { ports_[index] = port; }

    // Audio thread.

    /// Calls `change(index, own)` for each parameter that a port gives a new value. `valueOf(index)` is the
    /// one that it has.
    template <typename ValueOf, typename Change>
    VANTA_REALTIME void take(ValueOf valueOf, Change change);

    // Any other.

    /// An interface has told the host of a value, as `shown`. Until the port says it, what the port says is
    /// what the host had before.
    void expect(std::size_t index, float shown) { expected_[index].store(shown); }
    /// The host has had its time: from here on the port counts when it says something new.
    void expectNothing(std::size_t index);
    void expectNothing();
    /// What each port said last, for a state; not a number where nobody has looked yet.
    std::vector<float> seen() const;
    /// A state is restored: a port that says what it said when that was saved has nothing new to say, and one
    /// that differs has. What is missing leaves its port as it is.
    void restore(std::span<const float> saved);
    /// From here on every port counts.
    void forget();

private:
    using Values = std::vector<std::atomic<float>>;

    /// Whether a port has something new to say; notes that it was heard.
    bool isNews(std::size_t index, float shown, bool restored);

    std::vector<Lv2Control> controls_;
    std::vector<const float*> ports_;
    Values seen_;
    Values restored_;
    Values expected_;  ///< not a number: nothing
    std::atomic<bool> isRestored_{false};
};

template <typename ValueOf, typename Change>
void Lv2PortValues::take(ValueOf valueOf, Change change) {
    const bool restored = isRestored_.exchange(false);
    for (std::size_t i = 0; i < controls_.size(); ++i) {
        if (!ports_[i]) continue;
        const float shown = *ports_[i];
        const std::optional<float> own = controls_[i].own(shown);
        if (!own || !isNews(i, shown, restored)) continue;
        // A host that sets a port to what the parameter shows already asks for nothing: the parameter keeps
        // its value to the last bit.
        if (shown != controls_[i].shown(valueOf(i))) change(i, *own);
    }
}

}  // namespace vanta
