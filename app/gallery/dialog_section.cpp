#include <memory>

#include "app/gallery/section.hpp"
#include "gui/controls/button.hpp"
#include "gui/controls/popup_menu.hpp"
#include "gui/tree/file_dialogs.hpp"
#include "gui/tree/root_control.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gallery {
namespace {

constexpr float kButtonWidth = 104.0f;
constexpr float kRowHeight = 24.0f;
constexpr float kResultWidth = 220.0f;
constexpr char kFilters[] = "Audio Files|*.wav;*.flac;*.aif;*.aiff|All Files|*.*";

/// Buttons that open what is not part of the page, and a line that says what came of it.
class DialogRow : public gui::Component {
public:
    DialogRow(gui::UserInterface& interface, const Workshop& shop, gui::Point at)
        : Component(interface), menu_(interface.createPopupMenu()), at_(at) {
        style_ = &interface.make<gui::Button::Style>();
        style_->textColor = kButtonText;
        style_->textAlignment = gui::Alignment::Center;
        style_->loadKind("Bar");
        addCaption(shop, "Dialogs", gui::Rect::ofSize(at.x, at.y - 16.0f, kButtonWidth, 14.0f));
        fillMenu();
        add(shop, "Message", &DialogRow::message);
        add(shop, "Confirm", &DialogRow::confirm);
        menuButton_ = &add(shop, "Menu", &DialogRow::menu);
        add(shop, "Open", &DialogRow::open);
        add(shop, "Save", &DialogRow::save);
        add(shop, "Folder", &DialogRow::folder);
        add(shop, "Full Screen", &DialogRow::fullScreen);
        result_ = &shop.ui().make<gui::Label>("What you choose is told here.");
        result_->style().fontSize = 8.25f;
        result_->style().lineStyle = gui::Text::LineStyle::Ellipsis;
        result_->style().maxWidth = kResultWidth;
        result_->textColor = kValue;
        result_->alignment = gui::Alignment::Right;
        result_->bounds = gui::Rect::ofSize(at.x + kButtonWidth - kResultWidth,
                                            at.y + 7.0f * kRowHeight + 8.0f, kResultWidth, 18.0f);
        result_->parent = &shop.parent;
    }

private:
    using Handler = void (DialogRow::*)(void*);

    /// Below the one before.
    gui::Button& add(const Workshop& shop, const std::string& caption, Handler handler) {
        const float top = at_.y + static_cast<float>(count_++) * kRowHeight;
        auto& button = shop.ui().make<gui::Button>(shop.animator, style_);
        button.setCaption(caption);
        button.accessibleName = caption;
        button.bounds = gui::Rect::ofSize(at_.x, top, kButtonWidth, 20.0f);
        button.parent = &shop.parent;
        button.onClick.setHandler(this, handler);
        return button;
    }

    void fillMenu() {
        menu_->addItem("Undo\tCtrl+Z", 1);
        menu_->addItem("Redo\tCtrl+Shift+Z", 2);
        menu_->item(1)->enabled = false;
        menu_->addSeparator();
        menu_->addItem("Show Hints", 3);
        menu_->item(3)->checked = true;
        menu_->addItem("Scale", 4);
        for (const char* scale : {"100 %", "150 %", "200 %"}) menu_->item(4)->addItem(scale);
        menu_->item(4)->checkOnly(0);
        menu_->onPicked.setHandler(this, &DialogRow::picked);
    }

    void picked(void* item) { tell("Chosen: " + static_cast<gui::MenuItem*>(item)->caption()); }
    void tell(const std::string& text) { result_->setText(text); }

    // After each dialog the window may have gone, and this with it.
    void message(void*) {
        ui().showMessage("Everything is in order. This is what a message of two sentences looks like.", 0);
    }
    void confirm(void*) {
        const std::shared_ptr<gui::EventRelay> relay = ui().relay();
        const bool isCancelled =
            ui().showMessage("Do you want to restore all settings? This cannot be undone.",
                             gui::UserInterface::kConfirmation | gui::UserInterface::kWithCancel);
        if (relay->isOpen()) tell(isCancelled ? "Cancelled" : "Confirmed");
    }
    void menu(void*) {
        menu_->show(menuButton_->toWindow(gui::Point{0.0f, menuButton_->localBounds().bottom}));
    }

    template <typename Dialog>
    void ask(std::unique_ptr<Dialog> dialog, const std::string& title) {
        const std::shared_ptr<gui::EventRelay> relay = ui().relay();
        dialog->title = title;
        dialog->path = path_;
        const bool isChosen = dialog->show();
        if (!relay->isOpen()) return;
        if (isChosen) path_ = dialog->path;
        tell(isChosen ? path_ : "Nothing was chosen");
    }
    void open(void*) {
        auto dialog = ui().createOpenDialog();
        dialog->filter = kFilters;
        ask(std::move(dialog), "Open an Audio File");
    }
    void save(void*) {
        auto dialog = ui().createSaveDialog();
        dialog->filter = kFilters;
        dialog->defaultExtension = "wav";
        ask(std::move(dialog), "Save an Audio File");
    }
    void folder(void*) { ask(ui().createSelectFolderDialog(), "Select a Folder"); }
    void fullScreen(void*) {
        gui::RootControl& root = ui().rootControl();
        root.fullScreen = !root.fullScreen;
    }

    std::unique_ptr<gui::PopupMenu> menu_;
    gui::Point at_;
    int count_ = 0;
    gui::Button::Style* style_;
    gui::Button* menuButton_ = nullptr;
    gui::Label* result_ = nullptr;
    std::string path_;
};

}  // namespace

void addDialogs(const Workshop& shop, gui::Point at) {
    shop.ui().make<DialogRow>(shop, at);
}

}  // namespace vanta::gallery
