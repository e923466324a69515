#pragma once

#include <string>

#include "gui/controls/button.hpp"
#include "gui/controls/image_menu.hpp"

namespace vanta::gui {

/// Its value is the index of one of several pictures. It shows that one, and a click opens a grid of all.
class ImageSelectButton : public Button {
public:
    explicit ImageSelectButton(UserInterface& interface, Animator* animatedBy = nullptr,
                               Style* sharedStyle = nullptr);

    /// Of the grid that opens.
    Property<int> columns{nullptr, 4};

    /// Strips of `count` pictures of equal width. What cannot be read is empty.
    void setPictures(const std::string& offImage, const std::string& onImage, int count);
    const ImageMenu* menu() const { return menu_; }

    void click() override;
    bool keyDown(const KeyPress& key) override;
    void deferredCall(int argument) override;
    void linkRemoved(Component* other) override;
    void paint(Canvas& canvas) override;

private:
    void menuClosed(void*);

    ImageCells cells_;
    ImageMenu* menu_ = nullptr;
};

}  // namespace vanta::gui
