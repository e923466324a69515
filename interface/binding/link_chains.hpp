#pragma once

#include <vector>

namespace vanta::interface {

/// Parameters that move together, in chains: a gesture on one of them moves the others as far, as a share of
/// their range. Each parameter is in one chain at the most.
class LinkChains {
public:
    explicit LinkChains(int parameterCount) : rows_(static_cast<std::size_t>(parameterCount)) {}

    /// Joins the chains of both.
    void link(int a, int b);
    void leave(int parameter);
    /// The whole chain of a parameter, itself included, from the first to the last.
    std::vector<int> chainOf(int parameter) const;
    bool isLinked(int parameter) const { return row(parameter).next >= 0 || row(parameter).previous >= 0; }

    /// Where a parameter stood when the gesture began, 0 to 1.
    float base(int parameter) const { return row(parameter).base; }
    void setBase(int parameter, float position) { row(parameter).base = position; }

private:
    struct Row {
        int next = -1;
        int previous = -1;
        float base = 0.0f;
    };

    Row& row(int parameter) { return rows_[static_cast<std::size_t>(parameter)]; }
    const Row& row(int parameter) const { return rows_[static_cast<std::size_t>(parameter)]; }

    std::vector<Row> rows_;
};

}  // namespace vanta::interface
