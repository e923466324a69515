#include "app/progress_bar.hpp"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace vanta {

namespace {

constexpr auto kInterval = std::chrono::milliseconds(100);

bool isTerminal() {
    const char* kind = std::getenv("TERM");
    return ::isatty(STDERR_FILENO) != 0 && kind && std::string_view(kind) != "dumb";
}

std::size_t terminalWidth() {
    winsize size{};
    const bool known = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : 80;
}

}  // namespace

ProgressBar::ProgressBar(std::string title, std::int64_t totalFrames, double sampleRate, bool wanted)
    : title_(std::move(title)),
      total(std::max<std::int64_t>(totalFrames, 1)),
      rate(sampleRate),
      visible(wanted && isTerminal()) {}

ProgressBar::~ProgressBar() {
    if (drawn) fmt::print(stderr, "\r\033[K");
}

void ProgressBar::show(std::int64_t frames) {
    if (!visible) return;
    const auto now = Clock::now();
    if (now < nextDraw) return;
    nextDraw = now + kInterval;
    drawn = true;
    draw(frames, now);
}

void ProgressBar::draw(std::int64_t frames, Clock::time_point now) const {
    const double share = std::min(1.0, static_cast<double>(frames) / static_cast<double>(total));
    const double elapsed = std::max(1e-3, std::chrono::duration<double>(now - started).count());
    const std::string tail = fmt::format("{:4.0f}%  {:.0f}x real time", 100.0 * share,
                                         static_cast<double>(frames) / rate / elapsed);

    const std::size_t width = terminalWidth();
    constexpr std::size_t kBrackets = 5;
    const std::size_t room = width - std::min(width, tail.size() + kBrackets);
    const std::string name = title_.substr(0, room / 2);
    const std::size_t bar = std::min<std::size_t>(40, room - name.size());
    const auto full = static_cast<std::size_t>(share * static_cast<double>(bar));
    fmt::print(stderr, "\r{} [{:#<{}}{:.<{}}]{}\033[K", name, "", full, "", bar - full, tail);
    std::fflush(stderr);
}

}  // namespace vanta
