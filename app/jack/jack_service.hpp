#pragma once

#include <exception>

#include "app/jack/session.hpp"
#include "app/window/app_engine.hpp"
#include "host/jack/jack_client.hpp"

namespace vanta {

/// What the program does while it runs, in a loop of its own or in that of its window.
class JackService final : public AppEngine {
public:
    JackService(JackClient& client, const Session& session) : client_(client), session_(session) {}

    /// The client is: before, nothing is done.
    void opened() { isOpen_ = true; }
    /// Interrupted, or for a reason that `throwWhatEndedIt` has.
    bool hasEnded() const override;
    void throwWhatEndedIt() const {
        if (reason_) std::rethrow_exception(reason_);
    }

    HostedPlugin& plugin() override { return client_.plugin(); }
    std::string start() override { return {}; }
    void pump() override;

private:
    void serve();
    void saveOnRequest() const;

    JackClient& client_;
    const Session& session_;
    bool isOpen_ = false;
    std::exception_ptr reason_;
};

}  // namespace vanta
