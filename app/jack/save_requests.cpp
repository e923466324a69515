#include "app/jack/save_requests.hpp"

#include <csignal>

namespace vanta {

namespace {

// A signal handler reaches nothing but a global.
volatile sig_atomic_t requested = 0;

extern "C" void markSaveRequest(int) {
    requested = 1;
}

}  // namespace

void watchForSaveRequests() {
    struct sigaction action {};
    action.sa_handler = markSaveRequest;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGUSR1, &action, nullptr);
}

bool takeSaveRequest() {
    const bool was = requested != 0;
    requested = 0;
    return was;
}

}  // namespace vanta
