#pragma once

#include <optional>
#include <set>
#include <string>
#include <utility>

#include "foundation/interval_timer.hpp"

namespace vanta {

/// One walk through a folder tree: what it may cost, and where it has been.
class PresetScan {
public:
    /// `clock` counts from the start of the walk and outlives it.
    PresetScan(const IntervalTimer& clock, int timeBudgetMs) : timer_(clock), budgetMs_(timeBudgetMs) {}

    bool hasTime() const { return timer_.elapsed() < budgetMs_; }
    /// Notes the directory; false if the walk has been there, or if there is none.
    bool enter(const std::string& path);
    bool hasEntered(const std::string& path) const;

private:
    using Directory = std::pair<unsigned long, unsigned long>;  ///< device and inode
    static std::optional<Directory> identify(const std::string& path);

    const IntervalTimer& timer_;
    int budgetMs_;
    std::set<Directory> visited_;
};

}  // namespace vanta
