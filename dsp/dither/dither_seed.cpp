#include "dsp/dither/dither_seed.hpp"

#include <atomic>

namespace vanta {

namespace {

std::atomic<std::uint32_t> counter{1};

}  // namespace

void setDitherSeed(std::uint32_t seed) {
    counter.store(seed, std::memory_order_relaxed);
}

// Neighbouring numbers are scattered (the finaliser of MurmurHash3), so that channels made one after the
// other share no pattern.
std::uint32_t nextDitherSeed() {
    std::uint32_t x = counter.fetch_add(0x9E3779B9u, std::memory_order_relaxed);
    x = (x ^ (x >> 16)) * 0x85EBCA6Bu;
    x = (x ^ (x >> 13)) * 0xC2B2AE35u;
    return x ^ (x >> 16);
}

}  // namespace vanta
