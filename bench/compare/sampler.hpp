#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace vanta::bench {

/// Notes several thousand times a second where the calling thread is. Time in which it does not run counts as
/// well, at the place where it was stopped; that place is as likely as any other. One at a time.
class Sampler {
public:
    Sampler();
    ~Sampler();
    Sampler(const Sampler&) = delete;
    Sampler& operator=(const Sampler&) = delete;

    /// The addresses so far.
    std::span<const std::uintptr_t> addresses() const;

private:
    void* timer_ = nullptr;
};

}  // namespace vanta::bench
