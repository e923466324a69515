#pragma once

#include <optional>
#include <string>

#include "host/jack/jack_server.hpp"
#include "tests/host/jack/child_process.hpp"
#include "tests/plugin/user_home.hpp"

namespace vanta::test {

/// A JACK server without a sound card, under a name that no other has, and with a user of its own. It is the
/// default server of this process and its children.
class DummyServer {
public:
    static constexpr int kRate = 48000;
    static constexpr int kBuffer = 256;

    /// std::runtime_error if there is no jackd, or it does not come up.
    DummyServer();

    /// Ends as by its user's wish.
    void stop() { process_.reset(); }

    UserHome home;

private:
    std::optional<ChildProcess> process_;
};

}  // namespace vanta::test
