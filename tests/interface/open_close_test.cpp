#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "gui/controls/text_editor.hpp"
#include "interface/layout/vanta_interface.hpp"
#include "tests/host/session.hpp"
#include "tests/interface/frame_rig.hpp"
#include "tests/interface/later.hpp"

// Last, as X's headers take common words away.
#include "tests/gui/x11_server.hpp"

namespace vanta::interface {
namespace {

/// What is open, or half done, when the end comes.
enum class Busy { WithNothing, Menu, Dialog, Message, Typing, Learning, FullScreen };
constexpr int kBusy = 7;

/// How often a window is opened and closed: enough for each way of both ends. VANTA_ROUNDS asks for more.
int rounds() {
    const char* asked = std::getenv("VANTA_ROUNDS");
    return asked ? std::atoi(asked) : 2 * kBusy;
}

std::ptrdiff_t entriesOf(const std::filesystem::path& folder) {
    return std::distance(std::filesystem::directory_iterator(folder), {});
}

/// What must not grow. Each client of the server is a descriptor there, as is each piece of shared memory.
struct Held {
    explicit Held(const gui::X11Server& server)
        : descriptors(entriesOf("/proc/self/fd")),
          threads(entriesOf("/proc/self/task")),
          clients(entriesOf("/proc/" + std::to_string(server.process()) + "/fd")) {}
    bool operator==(const Held&) const = default;
    friend void PrintTo(const Held& held, std::ostream* out) {
        *out << held.descriptors << " descriptors, " << held.threads << " threads, " << held.clients
             << " descriptors of the server";
    }

    std::ptrdiff_t descriptors;
    std::ptrdiff_t threads;
    std::ptrdiff_t clients;
};

/// A plug-in whose editor lives in a window that another client of the server, the host, has made.
class Instance {
public:
    explicit Instance(gui::X11Server& on) : server_(on) {}

    void open(bool isAccelerated, int x) {
        auto& model = static_cast<VantaPlugin&>(session.host.model());
        hostWindow_ = server_.makeWindow(x, 0, static_cast<unsigned>(model.interfaceWidth()),
                                         static_cast<unsigned>(model.interfaceHeight()));
        gui::X11Settings settings;
        settings.parentWindow = hostWindow_;
        settings.width = static_cast<float>(model.interfaceWidth());
        settings.height = static_cast<float>(model.interfaceHeight());
        settings.displayName = server_.name();
        settings.acceleration = isAccelerated ? gui::AccelerationMode::kForced | 1 : 0;
        ui = std::make_unique<gui::X11Interface>(settings);
        const gui::RootControl::MessageScope scope(ui->rootControl());
        frame = std::make_unique<VantaInterface>(*ui, model);
        frame->attachEditor(&editor_);
        ui->show();
        EXPECT_EQ(ui->accelerated, isAccelerated);
    }
    void shut() {
        frame.reset();
        ui.reset();
        killHostWindow();
    }
    void killHostWindow() {
        if (hostWindow_ == gui::kNoXid) return;
        XDestroyWindow(server_.display(), std::exchange(hostWindow_, gui::kNoXid));
        server_.sync();
    }
    bool isOpen() const { return ui && ui->isOpen(); }

    test::Session session;
    std::unique_ptr<gui::X11Interface> ui;
    std::unique_ptr<VantaInterface> frame;

private:
    gui::X11Server& server_;
    TestEditor editor_;
    Window hostWindow_ = gui::kNoXid;
};

/// Painted in memory or, by a thread of its own, with OpenGL.
class OpenCloseTest : public ::testing::TestWithParam<bool> {
protected:
    OpenCloseTest() {
        // No desktop, whose dialogs would be programs of their own.
        ::setenv("PATH", home.path.c_str(), 1);
        ::setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);
        audio_ = std::thread([this] {
            for (int i = 0; !stop_; ++i) {
                for (Instance* each : {&subject, &neighbour}) {
                    each->session.host.automate(0, i % 30);
                    each->session.process();
                }
            }
        });
    }
    ~OpenCloseTest() override {
        stop_ = true;
        audio_.join();
    }

    /// Both, as the host's main loop does it.
    void run(int milliseconds) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
        while (std::chrono::steady_clock::now() < end) {
            for (Instance* each : {&subject, &neighbour}) {
                if (each->isOpen()) each->ui->idle();
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(4));
        }
    }
    /// Returns when the subject's interface has lost its window or is deleted.
    void end(Busy busy, bool byHostWindow) {
        gui::X11Interface& ui = *subject.ui;
        VantaInterface& frame = *subject.frame;
        {
            const gui::RootControl::MessageScope scope(ui.rootControl());
            begin(busy, frame);
        }
        if (busy != Busy::Message) run(40);
        const gui::RootControl::MessageScope scope(ui.rootControl());
        new Later(ui, [this, byHostWindow] { byHostWindow ? subject.killHostWindow() : subject.shut(); });
        if (busy == Busy::Menu) frame.presetsMenu().show({10.0f, 10.0f});
    }
    void begin(Busy busy, VantaInterface& frame) {
        if (busy == Busy::Dialog) {
            findItem(frame.helpMenu().refill(), "About")->picked();
        } else if (busy == Busy::Message) {
            frame.notices().show("The disk is full.");
        } else if (busy == Busy::Typing) {
            frame.valueDisplay().beginTyping(*frame.bindings().control(0));
            ASSERT_NE(frame.valueDisplay().editor(), nullptr);
            EXPECT_TRUE(frame.valueDisplay().editor()->isActive());
        } else if (busy == Busy::Learning) {
            frame.commands().toggleMidiLearn();
        } else if (busy == Busy::FullScreen) {
            frame.root().fullScreen = true;
        }
    }
    void round(int number) {
        const bool byHostWindow = number % 2;
        const auto busy = static_cast<Busy>(number / 2 % kBusy);
        subject.open(GetParam(), 0);
        neighbour.open(GetParam(), 100);
        run(60);
        end(busy, byHostWindow);
        const auto patience = std::chrono::milliseconds(20 * gui::X11Server::kPatienceMs);
        const auto latest = std::chrono::steady_clock::now() + patience;
        while (subject.isOpen() && std::chrono::steady_clock::now() < latest) run(4);
        EXPECT_FALSE(subject.isOpen());
        subject.shut();
        EXPECT_EQ(subject.session.host.model().owner().listener(), nullptr);
        run(20);
        EXPECT_TRUE(neighbour.isOpen());
        neighbour.shut();
    }

    gui::X11Server& server = gui::X11Server::get();
    FactoryHome home;
    Instance subject{server};
    Instance neighbour{server};

private:
    std::atomic<bool> stop_{false};
    std::thread audio_;
};

TEST_P(OpenCloseTest, LeavesNothingBehindWhateverIsOpenAndWhoeverEndsIt) {
    // Libraries keep some things from their first use on.
    round(0);
    round(2 * static_cast<int>(Busy::Message));
    const Held before(server);
    for (int i = 0; i < rounds() && !HasFailure(); ++i) {
        SCOPED_TRACE(i);
        round(i);
    }
    EXPECT_EQ(Held(server), before);
}

INSTANTIATE_TEST_SUITE_P(Renderers, OpenCloseTest, ::testing::Bool(),
                         [](const auto& each) { return each.param ? "OpenGl" : "Memory"; });

}  // namespace
}  // namespace vanta::interface
