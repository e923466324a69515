#include "cli/interrupt.hpp"

#include <csignal>
#include <initializer_list>

namespace vanta {

namespace {

// A signal handler reaches nothing but a global.
volatile sig_atomic_t requested = 0;

extern "C" void markInterrupt(int) {
    requested = 1;
}

void handle(int number, void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(number, &action, nullptr);
}

}  // namespace

void watchForInterrupts() {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) handle(number, markInterrupt);
    handle(SIGXFSZ, SIG_IGN);
}

bool interruptRequested() {
    return requested != 0;
}

}  // namespace vanta
