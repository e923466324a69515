#pragma once

#include "app/window/app_engine.hpp"
#include "foundation/failure.hpp"
#include "host/jack/jack_client.hpp"

namespace vanta {

/// What other clients of JACK play.
class LiveEngine final : public AppEngine {
public:
    explicit LiveEngine(ChannelLayout layout) : client_(layout, true) {}

    HostedPlugin& plugin() override { return client_.plugin(); }
    std::string start() override {
        client_.open({.clientName = "vanta-app"});
        return "runs as " + client_.name() + " on JACK: connect its ports";
    }
    void pump() override {
        if (!client_.whyServerHasGone()) client_.pump();
    }

private:
    JackClient client_;
};

}  // namespace vanta
