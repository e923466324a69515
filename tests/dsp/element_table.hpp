#pragma once

#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include "tests/dsp/element_patch.hpp"

/// Every element of the block graph, for the contract that holds for all of them.
namespace vanta::test {

/// No promise.
inline constexpr double kAny = std::numeric_limits<double>::infinity();

/// How far an element may stray from the promise; 0 is bit for bit.
struct Bounds {
    double split = 0.0;     ///< between different blocks
    double reset = 0.0;     ///< of a reset element from a fresh one
    double constant = 0.0;  ///< between flagged and unflagged blocks
    bool gap = false;       ///< a block that was missed counts as a reset
    bool tail = false;      ///< dies away through the smallest numbers, which the processor's frame flushes
};

struct Element {
    friend void PrintTo(const Element& element, std::ostream* out) { *out << element.name; }

    std::string name;
    Feed feed;
    void (*build)(Patch&, int variant);
    Bounds bounds = {};
    int variant = 0;
};

/// Each in the settings that take different ways through its code.
std::vector<Element> elements();

}  // namespace vanta::test
