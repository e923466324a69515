#pragma once

#include <clap/plugin-factory.h>

#include <atomic>

#include "host/common/embedded_view.hpp"

namespace vanta {

/// What a module gives its host. Any thread.
class ClapModule {
public:
    /// Without `views` instances offer no window.
    explicit ClapModule(EmbeddedViewFactory views = {});
    ClapModule(const ClapModule&) = delete;
    ClapModule& operator=(const ClapModule&) = delete;

    /// A host may come several times, and leaves as often.
    bool enter();
    void leave();
    /// Null for what there is not, and while no host has come.
    const void* factory(const char* id) const;

private:
    struct Factory : clap_plugin_factory_t {
        const ClapModule* module;
    };

    static const clap_plugin_t* create(const clap_plugin_factory_t* factory, const clap_host_t* host,
                                       const char* id);

    const EmbeddedViewFactory views_;
    Factory factory_;
    std::atomic<int> hosts_{0};
};

}  // namespace vanta
