#pragma once

#include <cstdint>
#include <functional>
#include <random>
#include <string>

namespace vanta::test {

/// Calls `use` with damaged copies of `sound`, the same in every run: cut short, with bytes replaced, with
/// stretches of 0xFF or 0x7F as huge counts have them, with pieces doubled and taken out.
inline void forMutations(const std::string& sound, int count,
                         const std::function<void(const std::string&)>& use) {
    std::mt19937 random(20);
    const auto below = [&](std::size_t limit) { return limit ? random() % limit : 0; };
    for (int i = 0; i < count; ++i) {
        std::string damaged = sound;
        for (std::size_t changes = 1 + below(4); changes > 0 && !damaged.empty(); --changes) {
            const std::size_t at = below(damaged.size());
            switch (below(5)) {
                case 0:
                    damaged.resize(at);
                    break;
                case 1:
                    damaged[at] = static_cast<char>(random());
                    break;
                case 2:
                    damaged.replace(at, 4, std::string("\xFF\xFF\xFF\x7F", 4));
                    break;
                case 3:
                    damaged.insert(at, damaged.substr(below(damaged.size()), 1 + below(200)));
                    break;
                default:
                    damaged.erase(at, 1 + below(64));
                    break;
            }
        }
        use(damaged);
    }
}

}  // namespace vanta::test
