// The entry of libFuzzer. VANTA_FUZZ_TARGET names the target of this program.

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/fuzz/fuzz_targets.hpp"

namespace {

const vanta::fuzz::Target& target() {
    for (const vanta::fuzz::Target& each : vanta::fuzz::targets()) {
        if (each.name == VANTA_FUZZ_TARGET) return each;
    }
    std::abort();
}

}  // namespace

/// A corpus folder that is named by VANTA_FUZZ_SAMPLES gets a sound file to start from.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
    if (const char* folder = std::getenv("VANTA_FUZZ_SAMPLES")) {
        std::ofstream(std::filesystem::path(folder) / "sample", std::ios::binary) << target().sample();
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    target().run({reinterpret_cast<const char*>(data), size});
    return 0;
}
