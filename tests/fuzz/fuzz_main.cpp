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

/// A corpus folder that is named by VANTA_FUZZ_SAMPLES gets sound files to start from.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
    if (const char* folder = std::getenv("VANTA_FUZZ_SAMPLES")) {
        int number = 0;
        for (const std::string& sample : target().samples()) {
            const std::string name = "sample-" + std::to_string(number++);
            std::ofstream(std::filesystem::path(folder) / name, std::ios::binary) << sample;
        }
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    target().run({reinterpret_cast<const char*>(data), size});
    return 0;
}
