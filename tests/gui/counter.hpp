#pragma once

namespace vanta::test {

/// Counts how often an event was raised.
struct Counter {
    void hear(void*) { ++count; }
    int count = 0;
};

}  // namespace vanta::test
