#include "tests/gui/x11_server.hpp"

#include <fmt/format.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <stdexcept>

namespace vanta::gui {

using Clock = std::chrono::steady_clock;

X11Server& X11Server::get() {
    static X11Server server;
    return server;
}

X11Server::X11Server(const std::vector<std::string>& options) {
    int numbers[2];
    if (pipe(numbers) != 0) throw std::runtime_error("no pipe");
    process_ = fork();
    if (process_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        close(numbers[0]);
        const std::string fd = std::to_string(numbers[1]);
        std::vector<std::string> words{"Xvfb",        "-displayfd", fd,    "-screen", "0",
                                       "1024x768x24", "-nolisten",  "tcp", "-noreset"};
        words.insert(words.end(), options.begin(), options.end());
        std::vector<char*> arguments;
        for (std::string& word : words) arguments.push_back(word.data());
        arguments.push_back(nullptr);
        execvp("Xvfb", arguments.data());
        _exit(127);
    }
    close(numbers[1]);
    // It comes in pieces, and ends with the line.
    std::string number;
    pollfd ready{numbers[0], POLLIN, 0};
    char digit = 0;
    while (digit != '\n' && poll(&ready, 1, 20000) == 1 && read(numbers[0], &digit, 1) == 1) number += digit;
    close(numbers[0]);
    if (digit != '\n') throw std::runtime_error("Xvfb does not start");
    name_ = fmt::format(":{}", std::stoi(number));
    display_ = XOpenDisplay(name_.c_str());
    if (!display_) throw std::runtime_error("Xvfb lets nobody in");
}

X11Server::~X11Server() {
    XCloseDisplay(display_);
    kill(process_, SIGTERM);
    waitpid(process_, nullptr, 0);
}

int X11Server::clients() const {
    const std::filesystem::directory_iterator all(fmt::format("/proc/{}/fd", process_));
    return static_cast<int>(std::count_if(begin(all), end(all), [](const auto& entry) {
        std::error_code gone;
        return read_symlink(entry.path(), gone).string().starts_with("socket:");
    }));
}

void X11Server::movePointer(int x, int y) {
    XTestFakeMotionEvent(display_, -1, x, y, CurrentTime);
    sync();
}

void X11Server::button_(unsigned button, bool down) {
    XTestFakeButtonEvent(display_, button, down, CurrentTime);
    sync();
}

void X11Server::click(unsigned button) {
    press(button);
    release(button);
}

void X11Server::holdKey(KeySym symbol, bool down) {
    XTestFakeKeyEvent(display_, XKeysymToKeycode(display_, symbol), down, CurrentTime);
    sync();
}

void X11Server::typeKey(KeySym symbol) {
    holdKey(symbol, true);
    holdKey(symbol, false);
}

Window X11Server::makeWindow(int x, int y, unsigned width, unsigned height) {
    const Window window = XCreateSimpleWindow(display_, root(), x, y, width, height, 0, 0, 0x123456);
    XSelectInput(display_, window, KeyPressMask | SubstructureNotifyMask);
    XMapRaised(display_, window);
    sync();
    return window;
}

std::vector<unsigned> X11Server::pixels(Window window, int width, int height) {
    std::vector<unsigned> all;
    XWindowAttributes attributes{};
    if (!XGetWindowAttributes(display_, window, &attributes) || attributes.map_state != IsViewable)
        return all;
    XImage* image = XGetImage(display_, window, 0, 0, static_cast<unsigned>(width),
                              static_cast<unsigned>(height), AllPlanes, ZPixmap);
    if (!image) return all;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            all.push_back(static_cast<unsigned>(XGetPixel(image, x, y)) & 0xFFFFFFu);
        }
    }
    XDestroyImage(image);
    return all;
}

std::vector<Window> X11Server::children(Window window) {
    Window root = kNoXid;
    Window parent = kNoXid;
    Window* list = nullptr;
    unsigned count = 0;
    XQueryTree(display_, window, &root, &parent, &list, &count);
    std::vector<Window> all(list, list + count);
    if (list) XFree(list);
    return all;
}

bool runUntil(X11Interface& interface, const std::function<bool()>& condition) {
    const std::shared_ptr<EventRelay> relay = interface.relay();
    const auto end = Clock::now() + std::chrono::milliseconds(X11Server::kPatienceMs);
    while (!condition()) {
        if (Clock::now() > end || !relay->isOpen()) return false;
        pollfd ready{interface.fd(), POLLIN, 0};
        poll(&ready, 1, 5);
        interface.idle();
    }
    return true;
}

void settle(X11Interface& interface) {
    // Three frames: what one does shows in the next.
    const auto end = Clock::now() + std::chrono::milliseconds(60);
    runUntil(interface, [&] { return Clock::now() > end; });
}

}  // namespace vanta::gui
