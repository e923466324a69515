#include "host/clap/clap_descriptor.hpp"

#include "host/common/product_identity.hpp"

namespace vanta {

const clap_plugin_descriptor_t& clapDescriptor() {
    static const char* features[] = {CLAP_PLUGIN_FEATURE_AUDIO_EFFECT,
                                     CLAP_PLUGIN_FEATURE_LIMITER,
                                     CLAP_PLUGIN_FEATURE_MASTERING,
                                     CLAP_PLUGIN_FEATURE_MONO,
                                     CLAP_PLUGIN_FEATURE_STEREO,
                                     CLAP_PLUGIN_FEATURE_SURROUND,
                                     nullptr};
    static const ProductIdentity& identity = productIdentity();
    static const clap_plugin_descriptor_t descriptor{
        .clap_version = CLAP_VERSION_INIT,
        .id = identity.id,
        .name = identity.name,
        .vendor = identity.vendor,
        .url = "",
        .manual_url = "",
        .support_url = "",
        .version = identity.version,
        .description = identity.summary,
        .features = features,
    };
    return descriptor;
}

}  // namespace vanta
