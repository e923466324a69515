#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "gui/controls/toggle_button.hpp"
#include "gui/tree/file_dialogs.hpp"
#include "gui/tree/root_control.hpp"
#include "interface/frame/quillmark_plugin_interface.hpp"
#include "limiter/factory/factory_archive.hpp"
#include "limiter/model/vanta_plugin.hpp"
#include "plugin/parameters/abstract_plugin_parameter.hpp"
#include "tests/gui/test_interface.hpp"
#include "tests/plugin/user_home.hpp"

namespace vanta::interface {

/// A user with the factory presets.
struct FactoryHome : test::UserHome {
    FactoryHome() { registerFactoryArchive(); }
};

/// A desktop that answers as the test says, and writes down what it was asked.
struct Desktop : gui::TestInterface {
    using TestInterface::TestInterface;
    ~Desktop() override { shutDown(); }

    struct Menu : gui::PopupMenu {
        explicit Menu(Desktop& on) : PopupMenu(on), desktop(on) {}
        gui::MenuItem* choose(gui::Point) override {
            const auto choose = desktop.choice;  // which may be the end of the desktop
            return choose ? choose(*this) : nullptr;
        }
        Desktop& desktop;
    };
    struct File : gui::OpenSaveDialog {
        explicit File(Desktop& on) : desktop(on) {}
        bool show() override {
            desktop.askedAt = path;
            if (desktop.answer) path = *desktop.answer;
            return desktop.answer.has_value();
        }
        Desktop& desktop;
    };
    struct Folder : gui::SelectFolderDialog {
        explicit Folder(Desktop& on) : desktop(on) {}
        bool show() override {
            if (desktop.answer) path = *desktop.answer;
            return desktop.answer.has_value();
        }
        Desktop& desktop;
    };

    std::unique_ptr<gui::PopupMenu> createPopupMenu() override { return std::make_unique<Menu>(*this); }
    std::unique_ptr<gui::OpenSaveDialog> createOpenDialog() override { return file(); }
    std::unique_ptr<gui::OpenSaveDialog> createSaveDialog() override { return file(); }
    std::unique_ptr<gui::SelectFolderDialog> createSelectFolderDialog() override {
        return hasDialogs ? std::make_unique<Folder>(*this) : nullptr;
    }
    bool showMessage(const std::string& text, int flags) override {
        messages.push_back(text);
        return (flags & kWithCancel) && cancels;
    }
    std::unique_ptr<gui::OpenSaveDialog> file() {
        return hasDialogs ? std::make_unique<File>(*this) : nullptr;
    }

    std::function<gui::MenuItem*(gui::PopupMenu&)> choice;
    std::optional<std::string> answer;  ///< of file dialogs; nothing: cancelled
    std::string askedAt;
    bool hasDialogs = true;
    bool cancels = false;
    std::vector<std::string> messages;
};

/// A host's window that writes down what it is told.
struct TestEditor : Editor {
    void beginGesture(int parameter) override { log.push_back("begin " + std::to_string(parameter)); }
    void gestureMoved(int parameter, float) override { log.push_back("move " + std::to_string(parameter)); }
    void endGesture(int parameter) override { log.push_back("end " + std::to_string(parameter)); }
    bool canResize() const override { return resizes; }
    bool resize(InterfaceSize size) override {
        if (resizes) resizedTo = size;
        return resizes;
    }
    std::optional<InterfaceSize> workArea() const override { return area; }
    void refreshView() override { ++refreshed; }
    std::vector<std::string> take() { return std::exchange(log, {}); }

    std::vector<std::string> log;
    bool resizes = true;
    std::optional<InterfaceSize> area;
    std::optional<InterfaceSize> resizedTo;
    int refreshed = 0;
};

/// A control for each parameter, in rows, and the buttons of the bars.
struct TestFrame final : QuillmarkPluginInterface {
    TestFrame(gui::UserInterface& interface, GenericPlugin& plugin)
        : QuillmarkPluginInterface(interface, plugin,
                                   interfaceProduct({}, {"Compact", "Small", "Medium", "Large"})) {
        for (int index = 0; index < plugin.parameterCount(); ++index) addControl(index);
        float x = 4.0f;
        for (int command = 0; command < kCommands; ++command, x += 64.0f) {
            addCommandButton(static_cast<Command>(command), gui::Rect::ofSize(x, 4.0f, 60.0f, 20.0f));
        }
        presetsButton = &addPresetsButton(gui::Rect::ofSize(x, 4.0f, 166.0f, 20.0f));
        addMidiMenuButton(gui::Rect::ofSize(4.0f, 456.0f, 20.0f, 20.0f));
        finish();
    }
    ~TestFrame() override { close(); }

    void addControl(int index) {
        const gui::Point at{10.0f + 78.0f * static_cast<float>(index % 10),
                            90.0f + 90.0f * static_cast<float>(index / 10)};
        const gui::Rect plate = gui::Rect::ofSize(at.x, at.y, 70.0f, 20.0f);
        const AbstractPluginParameter& parameter = *model().parameterAt(index);
        const bool isContinuous = parameter.kind() == AbstractPluginParameter::Kind::Float;
        if (isContinuous) {
            bindControl(index, &factory().addKnob(at, KnobStyle::Large));
        } else if (parameter.maximum() - parameter.minimum() > 1.0f) {
            auto& button = factory().addSelectButton(plate);
            for (float value = parameter.minimum(); value <= parameter.maximum(); ++value) {
                button.addItem(parameter.text(value));
            }
            bindControl(index, &button);
        } else {
            bindControl(index, &factory().addButton<gui::ToggleButton>(plate, ButtonStyle::Bar, "Switch"));
        }
    }
    void parameterChanged(int index) override { changed.push_back(index); }

    HotspotButton* presetsButton;
    std::vector<int> changed;
};

/// Texts of a menu's items, submenus indented, "-" for separators; a checked item has a "*".
inline void listMenu(const gui::Menu& menu, std::vector<std::string>& out, const std::string& indent = {}) {
    for (int i = 0; i < menu.itemCount(); ++i) {
        const gui::MenuItem& item = *menu.item(i);
        const std::string mark = item.checked ? "*" : item.enabled ? "" : "!";
        out.push_back(indent + mark + item.text.value());
        listMenu(item, out, indent + "  ");
    }
}
inline std::vector<std::string> listed(const gui::Menu& menu) {
    std::vector<std::string> out;
    listMenu(menu, out);
    return out;
}

inline gui::MenuItem* findItem(gui::Menu& menu, const std::string& text) {
    for (int i = 0; i < menu.itemCount(); ++i) {
        gui::MenuItem& item = *menu.item(i);
        if (item.text.value() == text) return &item;
        if (gui::MenuItem* inner = findItem(item, text)) return inner;
    }
    return nullptr;
}

}  // namespace vanta::interface
