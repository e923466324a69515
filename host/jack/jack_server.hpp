#pragma once

#include <jack/jack.h>

#include <memory>
#include <string>

namespace vanta {

struct JackClientCloser {
    void operator()(jack_client_t* client) const { jack_client_close(client); }
};
/// A connection to a server. It ends with the pointer.
using JackConnection = std::unique_ptr<jack_client_t, JackClientCloser>;

/// Which server, and who asks.
struct JackServer {
    std::string clientName = "vanta";  ///< the server adds a number if there is one of this name
    std::string serverName{};          ///< empty for the user's default one
    bool start = false;                ///< starts a server if none runs
};

/// Failure, which says what would be right, if there is no connection to be had. What JACK's library says of
/// its own accord goes nowhere from then on: it has more to say than concerns a user.
JackConnection openJack(const JackServer& server);

}  // namespace vanta
