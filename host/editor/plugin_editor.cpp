#include "host/editor/plugin_editor.hpp"

#include <sys/epoll.h>
#include <unistd.h>

#include <algorithm>
#include <system_error>
#include <vector>

#include "host/common/hosted_plugin.hpp"
#include "host/common/model_viewer.hpp"
#include "host/editor/editor_window.hpp"

namespace vanta {
namespace {

/// A descriptor that can be read when the one that it watches can be read. It stays the same for the host
/// while windows come and go.
class Watch {
public:
    Watch() : fd_(epoll_create1(EPOLL_CLOEXEC)) {
        if (fd_ < 0) throw std::system_error(errno, std::generic_category(), "no event loop can be made");
    }
    ~Watch() { close(fd_); }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    /// Until it is closed.
    void add(int watched) const {
        epoll_event interest{};
        interest.events = EPOLLIN;
        if (epoll_ctl(fd_, EPOLL_CTL_ADD, watched, &interest) != 0)
            throw std::system_error(errno, std::generic_category(), "no event loop can be made");
    }
    int fd() const { return fd_; }

private:
    int fd_;
};

}  // namespace

/// What may be on the stack when the host lets go of the editor: it then lives on until `idle` is through,
/// and asks nothing of the host any more.
class PluginEditor::Core final : private interface::Editor, private ModelViewer {
public:
    Core(HostedPlugin& plugin, NativeWindow parent, EmbeddedViewHost& host)
        : plugin_(&plugin), host_(&host), parent_(parent) {
        open();
        plugin.addViewer(*this);
    }
    ~Core() override { close(); }
    Core(const Core&) = delete;
    Core& operator=(const Core&) = delete;

    void idle();
    void leave();
    bool keyPressed(const ViewKey& key) { return window_ && window_->keyPressed(key); }
    int parameterAt(int x, int y);
    NativeWindow window() { return window_ ? window_->ui().window() : 0; }
    int fd() const { return watch_.fd(); }

    bool isResizable() const { return plugin_ && plugin_->model().canResize(); }
    ViewSize size() { return window_ ? window_->size() : lastSize_; }
    ViewSize nearestSize(ViewSize wanted) { return window_ ? window_->nearestSize(wanted) : lastSize_; }
    void resize(ViewSize size) {
        if (window_) window_->resize(size);
    }
    void setScale(double wanted);
    void setVisible(bool visible);
    void setTitle(const std::string& title);
    void setTransientFor(NativeWindow window);

private:
    bool isFloating() const { return parent_ == 0; }
    void open();
    void close();
    void followScale();
    void tellClosed();
    void closed(void*) { closed_ = true; }

    // interface::Editor

    void beginGesture(int parameter) override;
    void endGesture(int parameter) override;
    bool canResize() const override { return isFloating() || (host_ && host_->canResize()); }
    bool resize(InterfaceSize size) override {
        return isFloating() || (host_ && host_->requestResize(window_->pixels(size)));
    }
    std::optional<InterfaceSize> workArea() const override { return window_->workArea(); }

    // ModelViewer

    void modelGoes() override { close(); }
    void modelCame() override;
    void pluginGoes() override { plugin_ = nullptr; }

    HostedPlugin* plugin_;    ///< null when it has gone
    EmbeddedViewHost* host_;  ///< null when it has let go
    const NativeWindow parent_;
    const Watch watch_;
    double hostScale_ = 0.0;
    bool isVisible_ = false;
    std::string title_;
    NativeWindow transientFor_ = 0;
    std::vector<int> held_;
    bool closed_ = false;     ///< the host has not been told yet
    double lastScale_ = 1.0;  ///< that the host knows
    ViewSize lastSize_;
    std::unique_ptr<EditorWindow> window_;  ///< none without a model
};

void PluginEditor::Core::open() {
    interface::Editor& self = *this;
    window_ = std::make_unique<EditorWindow>(plugin_->model(), self, parent_, hostScale_);
    gui::X11Interface& ui = window_->ui();
    ui.onClose.addHandler(this, &Core::closed);
    watch_.add(ui.fd());
    lastScale_ = window_->scale();
    if (!title_.empty()) ui.setTitle(title_);
    if (transientFor_ != 0) ui.setTransientFor(transientFor_);
    if (isVisible_) ui.show();
}

/// The host waits for the end of each gesture that it was told the begin of.
void PluginEditor::Core::close() {
    if (window_) lastSize_ = window_->size();
    window_.reset();
    for (const int parameter : std::exchange(held_, {})) {
        if (plugin_) plugin_->endGesture(parameter);
    }
}

void PluginEditor::Core::modelCame() {
    try {
        open();
        // As large as the host's window is.
        window_->resize(window_->nearestSize(lastSize_));
    } catch (const std::exception&) {
        // The display or the parent has gone meanwhile. The host sees no window, and may close the view.
        window_.reset();
    }
}

void PluginEditor::Core::leave() {
    host_ = nullptr;
    if (window_) window_->ui().hide();
    for (const int parameter : std::exchange(held_, {})) {
        if (plugin_) plugin_->endGesture(parameter);
    }
    if (plugin_) plugin_->removeViewer(*this);
}

void PluginEditor::Core::beginGesture(int parameter) {
    if (!host_ || !plugin_) return;
    held_.push_back(parameter);
    plugin_->beginGesture(parameter);
}

void PluginEditor::Core::endGesture(int parameter) {
    if (std::erase(held_, parameter) > 0 && plugin_) plugin_->endGesture(parameter);
}

void PluginEditor::Core::idle() {
    if (window_) window_->ui().idle();
    if (plugin_ && host_) plugin_->pump();
    if (window_ && host_) followScale();
    if (host_ && closed_) tellClosed();
}

/// Of another scale of the desktop the host cannot know.
void PluginEditor::Core::followScale() {
    if (window_->scale() == lastScale_) return;
    lastScale_ = window_->scale();
    if (!isFloating()) host_->requestResize(window_->size());
}

void PluginEditor::Core::tellClosed() {
    closed_ = false;
    const bool isGone = !window_ || !window_->ui().isOpen();
    if (!isGone) setVisible(false);
    host_->viewClosed(isGone);
}

void PluginEditor::Core::setScale(double wanted) {
    hostScale_ = wanted;
    if (!window_) return;
    window_->setScale(wanted);
    lastScale_ = window_->scale();
}

void PluginEditor::Core::setVisible(bool visible) {
    isVisible_ = visible;
    if (!window_) return;
    if (visible) {
        window_->ui().show();
    } else {
        window_->ui().hide();
    }
}

void PluginEditor::Core::setTitle(const std::string& title) {
    title_ = title;
    if (window_) window_->ui().setTitle(title);
}

void PluginEditor::Core::setTransientFor(NativeWindow window) {
    transientFor_ = window;
    if (window_) window_->ui().setTransientFor(window);
}

int PluginEditor::Core::parameterAt(int x, int y) {
    if (!window_) return -1;
    const auto units = [&](int pixels) { return static_cast<float>(pixels / window_->scale()); };
    return window_->parameterAt({units(x), units(y)});
}

PluginEditor::PluginEditor(HostedPlugin& plugin, NativeWindow parent, EmbeddedViewHost& host)
    : core_(std::make_shared<Core>(plugin, parent, host)) {}

PluginEditor::~PluginEditor() {
    core_->leave();
}

NativeWindow PluginEditor::window() const {
    return core_->window();
}

void PluginEditor::setVisible(bool visible) {
    core_->setVisible(visible);
}

ViewSize PluginEditor::size() const {
    return core_->size();
}

bool PluginEditor::isResizable() const {
    return core_->isResizable();
}

ViewSize PluginEditor::nearestSize(ViewSize wanted) const {
    return core_->nearestSize(wanted);
}

void PluginEditor::resize(ViewSize size) {
    core_->resize(size);
}

void PluginEditor::setScale(double scale) {
    core_->setScale(scale);
}

void PluginEditor::idle() {
    const std::shared_ptr<Core> kept = core_;
    kept->idle();
}

int PluginEditor::fd() const {
    return core_->fd();
}

int PluginEditor::parameterAt(int x, int y) const {
    return core_->parameterAt(x, y);
}

bool PluginEditor::keyPressed(const ViewKey& key) {
    const std::shared_ptr<Core> kept = core_;
    return kept->keyPressed(key);
}

void PluginEditor::setTitle(const std::string& title) {
    core_->setTitle(title);
}

void PluginEditor::setTransientFor(NativeWindow window) {
    core_->setTransientFor(window);
}

EmbeddedViewFactory pluginEditors() {
    const auto open = [](HostedPlugin& plugin, NativeWindow parent,
                         EmbeddedViewHost& host) -> std::unique_ptr<EmbeddedView> {
        try {
            return std::make_unique<PluginEditor>(plugin, parent, host);
        } catch (const std::exception&) {
            return nullptr;
        }
    };
    return {open, &editorScale};
}

}  // namespace vanta
