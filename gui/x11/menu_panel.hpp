#pragma once

#include <memory>
#include <string>
#include <vector>

#include "gui/controls/menu.hpp"
#include "gui/graphics/text.hpp"
#include "gui/x11/x11_bitmap.hpp"
#include "gui/x11/x11_session.hpp"

namespace vanta::gui {

struct MenuArtwork;

/// One menu on the screen, without its submenus: a window above all others, whose rows are as the items were
/// when it opened. One that is taller than its monitor scrolls.
class MenuPanel {
public:
    /// `besides`: on the screen, what it opens next to, as a submenu does; a single point for a menu that
    /// opens there.
    MenuPanel(X11Session& session, const MenuArtwork& artwork, X11EventTarget& target, const Menu& menu,
              const DeviceRect& besides);
    ~MenuPanel();
    MenuPanel(const MenuPanel&) = delete;
    MenuPanel& operator=(const MenuPanel&) = delete;

    Window window() const { return window_; }
    bool contains(Point onScreen) const;
    /// -1 for none.
    int rowAt(Point onScreen) const;
    int rowCount() const { return static_cast<int>(rows_.size()); }
    int highlighted() const { return highlighted_; }
    /// -1 for none. Scrolls until it can be seen.
    void highlight(int row);
    /// The next row that can be highlighted in the direction of `step`, round the ends; -1 if there is none.
    int nextRow(int from, int step) const;
    /// The next row below whose caption begins with this letter, whatever its case; -1 if there is none.
    int rowBeginningWith(char32_t letter) const;
    bool canHighlight(int row) const;
    bool isSubmenu(int row) const;
    MenuItem* item(int row) const { return rows_[static_cast<std::size_t>(row)].item; }
    DeviceRect rowOnScreen(int row) const;
    void scrollBy(float logicalUnits);
    void paint();

private:
    struct Row {
        MenuItem* item;
        bool separator;
        bool active;
        bool checked;
        bool submenu;
        std::string letter;
        std::unique_ptr<Text> caption;
        std::unique_ptr<Text> accelerator;
        Rect area;  ///< before scrolling
    };

    void addRows(const Menu& menu);
    void place(const DeviceRect& besides);
    std::unique_ptr<Text> makeText(const std::string& shown) const;
    void paintRow(Canvas& canvas, const Row& row, bool isHighlighted) const;
    Rect visibleArea(const Row& row) const { return row.area.translated({0.0f, -scroll_}); }

    X11Session& session_;
    const MenuArtwork& artwork_;
    std::vector<Row> rows_;
    float width_ = 0.0f;
    float contentHeight_ = 0.0f;
    float height_ = 0.0f;  ///< of what can be seen
    float scroll_ = 0.0f;
    int highlighted_ = -1;
    DeviceRect area_;  ///< on the screen
    X11Bitmap bitmap_;
    Window window_ = kNoXid;
};

}  // namespace vanta::gui
