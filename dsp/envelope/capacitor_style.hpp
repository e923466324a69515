#pragma once

#include <vector>

#include "dsp/envelope/function_table_function.hpp"
#include "foundation/realtime.hpp"

namespace vanta {

/// What all capacitors of an engine share: a table of exp(x) over -25 to 0 in 8192 points. Read only.
class CapacitorStyle {
public:
    class ExpFunction final : public FunctionTableFunction {
    public:
        double operator()(double x) const override;
    };

    CapacitorStyle();

    /// exp(x) for x of at least -25, interpolated: within 2e-6 of the value. Anything above 0 counts as 0.
    VANTA_REALTIME double expTable(double x) const {
        const double place = (x + kSpan) * kPointsPerUnit;
        const int point = static_cast<int>(place) & (kPoints - 1);
        const double* entry = table_.data() + point;
        return entry[0] + (place - point) * (entry[1] - entry[0]);
    }

    static constexpr double kSpan = 25.0;

private:
    static constexpr int kPoints = 8192;
    static constexpr double kPointsPerUnit = (kPoints - 1) / kSpan;

    std::vector<double>
        table_;  ///< the last entry stands twice, so that the last point can be interpolated too
};

}  // namespace vanta
