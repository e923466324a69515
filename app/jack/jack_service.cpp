#include "app/jack/jack_service.hpp"

#include "app/jack/save_requests.hpp"
#include "app/jack/tell.hpp"
#include "cli/interrupt.hpp"
#include "cli/messages.hpp"
#include "foundation/failure.hpp"

namespace vanta {

bool JackService::hasEnded() const {
    return reason_ || interruptRequested();
}

/// A window's loop is no way for a failure to take.
void JackService::pump() {
    try {
        if (isOpen_ && !reason_) serve();
    } catch (...) {
        reason_ = std::current_exception();
    }
}

void JackService::serve() {
    if (client_.pump())
        tell("{}: {} Hz, {}\n", client_.name(), client_.plugin().sampleRate(), latencyText(client_.plugin()));
    if (const auto reason = client_.whyServerHasGone())
        throw Failure(
            fmt::format("the JACK server has gone ({}): start it, and this program, again", *reason));
    if (takeSaveRequest()) saveOnRequest();
}

/// Whoever asked for it goes on, as what could not be saved is still there.
void JackService::saveOnRequest() const {
    if (session_.file().empty()) return printError("there is nothing to save to: use --session or --save");
    try {
        session_.save();
        tell("{}: saved {}\n", client_.name(), session_.file().string());
    } catch (const Failure& failure) {
        printFailure(failure);
    }
}

}  // namespace vanta
