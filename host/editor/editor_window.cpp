#include "host/editor/editor_window.hpp"

#include <cmath>
#include <stdexcept>

#include "gui/tree/key_press.hpp"
#include "gui/tree/modifiers.hpp"
#include "gui/tree/root_control.hpp"
#include "interface/frame/interface_sizing.hpp"
#include "limiter/model/vanta_plugin.hpp"

namespace vanta {
namespace {

/// What a free size can be, in units.
constexpr InterfaceSize kLargest{2560, 1440};

static_assert(static_cast<int>(ViewKey::Key::End) == static_cast<int>(gui::Key::End));
gui::KeyPress toKeyPress(const ViewKey& key) {
    const int modifiers = (key.shift ? gui::modifier::kShift : 0) | (key.ctrl ? gui::modifier::kCtrl : 0) |
                          (key.alt ? gui::modifier::kAlt : 0) | (key.meta ? gui::modifier::kMeta : 0);
    return {static_cast<gui::Key>(key.key), modifiers, key.character};
}

InterfaceSize unitsOf(const gui::X11Desktop& desktop, double scale) {
    const auto units = [&](float length) {
        return static_cast<int>(static_cast<double>(length * desktop.scale) / scale);
    };
    return {units(desktop.width), units(desktop.height)};
}

ProcessGraphics graphicsOf(const GenericPlugin& model) {
    const auto shared = model.statics().lock();
    return readProcessGraphics(model.statics().settings);
}

/// The host's word, else the user's, else 0 for the desktop's.
double chosenScale(const GenericPlugin& model, double hostScale) {
    return hostScale > 0.0 ? hostScale : graphicsOf(model).scale;
}

gui::X11Settings settingsFor(GenericPlugin& model, NativeWindow parent, double hostScale,
                             const gui::X11Desktop& desktop) {
    const double wanted = chosenScale(model, hostScale);
    const double scale = wanted > 0.0 ? static_cast<double>(gui::snappedScale(static_cast<float>(wanted)))
                                      : static_cast<double>(desktop.scale);
    interface::fitToScreen(model, unitsOf(desktop, scale));
    gui::X11Settings settings;
    settings.parentWindow = parent;
    settings.title = "Vanta 2";
    settings.width = static_cast<float>(model.interfaceWidth());
    settings.height = static_cast<float>(model.interfaceHeight());
    settings.scale = static_cast<float>(wanted);
    settings.acceleration = static_cast<int>(graphicsOf(model).acceleration);
    return settings;
}

}  // namespace

EditorWindow::EditorWindow(GenericPlugin& model, interface::Editor& editor, NativeWindow parent,
                           double hostScale)
    : desktop_(gui::readDesktop()), model_(model), ui_(settingsFor(model, parent, hostScale, desktop_)) {
    const gui::RootControl::MessageScope held(ui_.rootControl());
    interface_.emplace(ui_, dynamic_cast<VantaPlugin&>(model));
    interface_->attachEditor(&editor);
}

void EditorWindow::setScale(double hostScale) {
    ui_.setScaleOverride(static_cast<float>(chosenScale(model_, hostScale)));
}

double EditorWindow::scale() {
    return static_cast<double>(ui_.deviceBacking().scale());
}

ViewSize EditorWindow::size() {
    const gui::Rect& bounds = ui_.rootControl().localBounds();
    const auto pixels = [&](float length) {
        return static_cast<int>(std::lround(static_cast<double>(length) * scale()));
    };
    return {pixels(bounds.width()), pixels(bounds.height())};
}

ViewSize EditorWindow::pixels(InterfaceSize size) {
    const auto pixels = [&](int units) { return static_cast<int>(std::lround(units * scale())); };
    return {pixels(size.width), pixels(size.height)};
}

/// A size that is within the limits stays as it is, to the pixel.
ViewSize EditorWindow::nearestSize(ViewSize wanted) {
    const auto units = [&](int pixels) { return static_cast<int>(std::lround(pixels / scale())); };
    const InterfaceSize asked{units(wanted.width), units(wanted.height)};
    InterfaceSize nearest = model_.limitSize(asked);
    nearest = {std::min(nearest.width, kLargest.width), std::min(nearest.height, kLargest.height)};
    const ViewSize limited = pixels(nearest);
    return {nearest.width == asked.width ? wanted.width : limited.width,
            nearest.height == asked.height ? wanted.height : limited.height};
}

void EditorWindow::resize(ViewSize size) {
    gui::RootControl& root = ui_.rootControl();
    const gui::RootControl::MessageScope held(root);
    const auto units = [&](int pixels) { return static_cast<float>(pixels / scale()); };
    root.setSize(units(size.width), units(size.height));
}

int EditorWindow::parameterAt(gui::Point point) {
    const gui::RootControl::MessageScope held(ui_.rootControl());
    return interface_->parameterAt(point);
}

bool EditorWindow::keyPressed(const ViewKey& key) {
    const gui::RootControl::MessageScope held(ui_.rootControl());
    return ui_.rootControl().platformKey(toKeyPress(key));
}

InterfaceSize EditorWindow::workArea() {
    return unitsOf(desktop_, scale());
}

double editorScale(double hostScale) {
    if (hostScale > 0.0) return static_cast<double>(gui::snappedScale(static_cast<float>(hostScale)));
    try {
        return static_cast<double>(gui::readDesktop().scale);
    } catch (const std::exception&) {
        return 1.0;
    }
}

}  // namespace vanta
