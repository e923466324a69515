#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "dsp/envelope/function_table_function.hpp"
#include "foundation/realtime.hpp"

namespace vanta {

/// A function of 0 to 1 in a table, interpolated linearly.
class FunctionTable {
public:
    static constexpr int kPoints = 256;

    explicit FunctionTable(const FunctionTableFunction& function);

    /// At a place from 0 to 1; places beyond count as the end.
    VANTA_REALTIME float lookUp(float place) const;
    /// kPoints values, and the last one once more, so that the last point can be interpolated too.
    std::span<const float> values() const { return values_; }

private:
    std::vector<float> values_;
};

}  // namespace vanta
