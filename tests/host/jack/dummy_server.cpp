#include "tests/host/jack/dummy_server.hpp"

#include <unistd.h>

#include "foundation/failure.hpp"

namespace vanta::test {

DummyServer::DummyServer() {
    const std::string name = "vanta-test-" + std::to_string(::getpid());
    ::setenv("JACK_DEFAULT_SERVER", name.c_str(), 1);
    ::setenv("JACK_NO_AUDIO_RESERVATION", "1", 1);
    const std::vector<std::string> jackd{
        "jackd", "--no-realtime",        "-n", name, "-d", "dummy", "-r", std::to_string(kRate),
        "-p",    std::to_string(kBuffer)};
    process_.emplace(jackd, home / "jackd.log");
    const auto answers = [] {
        try {
            return openJack({.clientName = "probe"}) != nullptr;
        } catch (const Failure&) {
            return false;
        }
    };
    if (!within(std::chrono::seconds(20), [&] { return answers() || !process_->isRunning(); }) ||
        !process_->isRunning())
        throw std::runtime_error("jackd (package jackd2) does not run: " + process_->printed());
}

}  // namespace vanta::test
