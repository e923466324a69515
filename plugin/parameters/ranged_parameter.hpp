#pragma once

#include <algorithm>
#include <atomic>
#include <cmath>
#include <string>
#include <type_traits>
#include <utility>

#include "foundation/numbers.hpp"
#include "plugin/parameters/abstract_plugin_parameter.hpp"

namespace vanta {

/// The value of a parameter with its range and default: a float, or an int for an index. Range 0 to 1,
/// default and value 0 until the table that builds it says otherwise.
template <typename Number>
class RangedParameter : public AbstractPluginParameter {
public:
    RangedParameter(GenericParameterOwner& owner, std::string name)
        : AbstractPluginParameter(owner, std::move(name),
                                  std::is_integral_v<Number> ? Kind::Indexed : Kind::Float) {}

    /// Sets up the range; `initial` becomes default and value. Notifies nobody: for the parameter's
    /// construction.
    void setRange(Number low, Number high, Number initial) {
        minimum_ = low;
        maximum_ = high;
        default_ = initial;
        value_.store(initial);
    }

    float defaultValue() const final { return static_cast<float>(default_); }
    float minimum() const final { return static_cast<float>(minimum_); }
    float maximum() const final { return static_cast<float>(maximum_); }
    float value() const final { return static_cast<float>(current()); }
    void setValue(float value, int flags) override {
        if (std::isnan(value)) return;
        const Number limited = limit(value);
        if (nearlyEqual(static_cast<float>(limited), this->value())) return;
        value_.store(limited);
        owner().parameterChanged(index(), static_cast<float>(limited), flags);
    }

protected:
    /// Limits to the range. An index is truncated after that, as not every float fits an int.
    VANTA_REALTIME Number limit(float value) const {
        return static_cast<Number>(std::clamp(value, minimum(), maximum()));
    }
    VANTA_REALTIME Number current() const { return value_.load(); }
    Number low() const { return minimum_; }
    Number high() const { return maximum_; }

private:
    // Host, interface and audio threads set and read it. In one order for all: who sets one parameter and
    // then looks at another, as an adapter does with the two of a pair, relies on that.
    std::atomic<Number> value_{0};
    Number default_ = 0;
    Number maximum_ = 1;
    Number minimum_ = 0;
};

}  // namespace vanta
