#pragma once

#include <memory>
#include <string>
#include <vector>

#include "gui/controls/alignment.hpp"
#include "gui/graphics/text.hpp"
#include "gui/tree/control.hpp"

namespace vanta::gui {

/// Lines of text in one style. The pointer goes through it.
class MultiLabel : public Control {
public:
    enum class Layout { Top, Middle, Bottom };
    static constexpr int kMostLines = 64;

    explicit MultiLabel(UserInterface& interface, int lineCount = 2);

    Property<Alignment> alignment{this, Alignment::Left};
    /// Without it the label is dimmed, as the control that it belongs to.
    Property<bool> enabledLook{this, true};
    /// Fully transparent: the colour of the style.
    Property<Color> textColor{this, Color::of(0x00FFFFFF)};
    /// One unit below the text; fully transparent for none.
    Property<Color> shadowColor{this, Color{}};
    /// Times the height of a line.
    Property<float> lineHeight{this, 1.0f};
    Property<Layout> layout{this, Layout::Middle};
    /// Above the first line and below the last.
    Property<float> topMargin{this, 3.0f};
    Property<float> bottomMargin{this, 3.0f};
    LimitedProperty<int> lines{this, 1, kMostLines, 1};

    /// Font, size and colour of all lines.
    Text& style() { return *style_; }
    /// From 0 to `lines` - 1.
    void setText(int line, const std::string& text);
    /// Of the widest line.
    float textWidth();

    int alphaAt(Point) override { return 0; }
    void propertyChanged(AbstractProperty& property) override;
    void paint(Canvas& canvas) override;

private:
    void styleChanged(void*);
    void setLineCount(int count);
    std::unique_ptr<Text> makeText() const;
    void paintLines(Canvas& canvas, std::vector<std::unique_ptr<Text>>& texts, float shift);

    std::unique_ptr<Text> style_;
    std::vector<std::unique_ptr<Text>> texts_;
    std::vector<std::unique_ptr<Text>> shadows_;
};

/// One line.
class Label : public MultiLabel {
public:
    explicit Label(UserInterface& interface, const std::string& shown = {}) : MultiLabel(interface, 1) {
        setText(shown);
    }
    void setText(const std::string& shown) { MultiLabel::setText(0, shown); }
};

}  // namespace vanta::gui
