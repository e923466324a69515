#include "tests/gui/x11_fixture.hpp"

#include <poll.h>
#include <atomic>
#include <thread>

#include "gui/x11/x11_bitmap.hpp"
#include "gui/x11/x11_clipboard.hpp"
#include "gui/x11/x11_session.hpp"
#include "gui/x11/x11_window.hpp"

namespace vanta::gui {
namespace {

TEST_F(X11Test, OtherThreadsWakeTheLoopAndTimersTick) {
    open();
    struct Target : Component {
        using Component::Component;
        void deferredCall(int argument) override { got = argument; }
        int got = 0;
    };
    auto& target = ui->make<Target>();
    std::thread([&] { ui->postDeferred(target, 5); }).join();
    pollfd ready{ui->fd(), POLLIN, 0};
    EXPECT_EQ(poll(&ready, 1, 1000), 1);
    EXPECT_TRUE(runUntil(*ui, [&] { return target.got == 5; }));

    struct Ticks {
        void tick(void* timer) {
            if (++count == 3) static_cast<Timer*>(timer)->running = false;
        }
        int count = 0;
    } ticks;
    const std::unique_ptr<Timer> timer = ui->createTimer();
    timer->interval = 5;
    timer->onTick.setHandler(&ticks, &Ticks::tick);
    timer->running = true;
    EXPECT_TRUE(runUntil(*ui, [&] { return ticks.count == 3; }));
    settle(*ui);
    EXPECT_EQ(ticks.count, 3);
}

TEST_F(X11Test, TextIsCopiedFromOneInterfaceToAnother) {
    open();
    EXPECT_EQ(ui->clipboard(), "");
    const std::unique_ptr<X11Interface> first = std::move(ui);
    open();
    const std::string copied = "-1.5 dB \xE2\x89\xA4 \xE2\x88\x9E";
    first->setClipboard(copied);
    EXPECT_EQ(first->clipboard(), copied);
    std::atomic<bool> done = false;
    std::string pasted;
    std::thread reader([&] {
        X11Display display(server.name());
        pasted = X11Clipboard(display).text();
        done = true;
    });
    EXPECT_TRUE(runUntil(*first, [&] { return done.load(); }));
    reader.join();
    EXPECT_EQ(pasted, copied);
    // The last one counts.
    ui->setClipboard("2");
    settle(*ui);
    EXPECT_EQ(ui->clipboard(), "2");
    EXPECT_EQ(first->clipboard(), "") << "nobody answers within the time";
}

/// Has the clipboard, and gives its text in pieces, as programs do whose text is long.
class LongText {
public:
    LongText(const std::string& displayName, const std::string& text) : display_(displayName) {
        Display* x = display_.get();
        const Window window = XCreateSimpleWindow(x, display_.root(), 0, 0, 1, 1, 0, 0, 0);
        XSetSelectionOwner(x, display_.atom("CLIPBOARD"), window, CurrentTime);
        XSync(x, kXFalse);
        thread_ = std::thread([this, text] { give(text); });
    }
    ~LongText() { thread_.join(); }

private:
    void give(std::string text) {
        Display* x = display_.get();
        XEvent event{};
        do XNextEvent(x, &event);
        while (event.type != SelectionRequest);
        const XSelectionRequestEvent request = event.xselectionrequest;
        XSelectInput(x, request.requestor, PropertyChangeMask);
        const long length = static_cast<long>(text.size());
        XChangeProperty(x, request.requestor, request.property, display_.atom("INCR"), 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(&length), 1);
        event.xselection = {
            SelectionNotify,  0,           kXTrue, x, request.requestor, request.selection, request.target,
            request.property, request.time};
        XSendEvent(x, request.requestor, kXFalse, NoEventMask, &event);
        for (bool isLast = false; !isLast;) {
            do XNextEvent(x, &event);
            while (event.type != PropertyNotify || event.xproperty.state != PropertyDelete);
            const std::size_t count = std::min<std::size_t>(text.size(), 1000);
            isLast = count == 0;
            XChangeProperty(x, request.requestor, request.property, request.target, 8, PropModeReplace,
                            reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(count));
            text.erase(0, count);
        }
        XSync(x, kXFalse);
    }

    X11Display display_;
    std::thread thread_;
};

TEST_F(X11Test, LongTextIsPastedInPieces) {
    open();
    std::string text;
    for (int i = 0; i < 5000; ++i) text += std::to_string(i) + " \xE2\x88\x9E ";
    const LongText other(server.name(), text);
    EXPECT_EQ(ui->clipboard(), text);
}

TEST_F(X11Test, ADeferredCallMayDeleteTheInterface) {
    X11Interface& interface = open();
    interface.postDeferred(interface.make<Executioner>(ui), 0);
    interface.run();
    EXPECT_FALSE(ui);
}

TEST_F(X11Test, PicturesAreSentWhereMemoryIsNotShared) {
    X11Session session(server.name());
    EXPECT_TRUE(session.display.sharesMemory());
    session.display.sharesNoMemory();
    const Window window = createWindow(session.display, session.display.root(), {0, 0, 40, 30}, true);
    XMapRaised(session.display.get(), window);
    X11Bitmap bitmap(session.backing, session.display);
    bitmap.setPixelSize(40, 30);
    for (int i = 0; i < 40 * 30; ++i) bitmap.row(0)[i] = static_cast<Pixel>(i * 999);
    bitmap.show(window, {5, 6, 35, 25});
    XSync(session.display.get(), kXFalse);
    const std::vector<unsigned> seen = server.pixels(window, 40, 30);
    ASSERT_EQ(seen.size(), 1200u);
    EXPECT_EQ(seen[6 * 40 + 5], bitmap.row(6)[5]);
    EXPECT_EQ(seen[24 * 40 + 34], bitmap.row(24)[34]);
    EXPECT_NE(seen[24 * 40 + 35], bitmap.row(24)[35]);
}

}  // namespace
}  // namespace vanta::gui
