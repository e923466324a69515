#include <limits>

#include "host/clap/clap_extension_tables.hpp"
#include "host/clap/clap_plugin.hpp"

// When sound comes, how long it goes on, and whether anybody waits for it.
namespace vanta {
namespace {

constexpr std::uint32_t kEndless = std::numeric_limits<std::int32_t>::max();

}  // namespace

const clap_plugin_latency_t kClapLatencyTable{
    .get =
        [](const clap_plugin_t* handle) {
            return answer(handle, std::uint32_t{0}, [](ClapPlugin& plugin) { return plugin.tellLatency(); });
        },
};

const ClapPluginTail kClapTailTable{
    .get =
        [](const clap_plugin_t* handle) {
            return answer(handle, kEndless, [](ClapPlugin& plugin) {
                const int samples = plugin.hosted().processor().tailLength();
                return samples < 0 ? kEndless : static_cast<std::uint32_t>(samples);
            });
        },
};

const ClapPluginRender kClapRenderTable{
    .has_hard_realtime_requirement = [](const clap_plugin_t*) { return false; },
    .set =
        [](const clap_plugin_t* handle, std::int32_t mode) {
            return answer(handle, false, [=](ClapPlugin& plugin) { return plugin.setRenderMode(mode); });
        },
};

}  // namespace vanta
