#pragma once

#include <string>

#include "foundation/notify_event.hpp"
#include "foundation/property.hpp"
#include "foundation/updated_object.hpp"
#include "gui/graphics/color.hpp"

namespace vanta::gui {

class Bitmap;

/// A piece of text in one style, measured and rendered once, when somebody asks. A change of any property
/// raises `onChange`.
class Text : public UpdatedObject, public PropertyOwner {
public:
    enum class LineStyle {
        SingleLine,  ///< cut off at the width limit
        Ellipsis,    ///< cut at the width limit, with an ellipsis
        WordWrap     ///< broken at the width limit
    };

    Text() = default;

    /// Takes over all properties.
    void copyStyleFrom(const Text& other);
    void propertyChanged(AbstractProperty& property) override;

    /// Rendered if need be.
    virtual const Bitmap& bitmap() = 0;
    /// Measured if need be; in logical units.
    virtual float height() = 0;
    virtual float width() = 0;
    /// By how much its top lies below the point at which it is drawn, in logical units.
    virtual float baselineOffset() const { return 0.0f; }

    Property<bool> bold{this, false};
    Property<Color> color{this, Color{0, 0, 0, 255}};
    Property<std::string> text{this, {}};  ///< UTF-8; a line break starts a new line
    Property<bool> italic{this, false};
    Property<LineStyle> lineStyle{this, LineStyle::SingleLine};
    Property<float> maxWidth{this, 0.0f};      ///< logical units; 0 for no limit, whatever the line style
    Property<float> fontSize{this, 8.0f};      ///< points, of 96 logical units an inch
    Property<std::string> fontName{this, {}};  ///< empty for the interface's own face
    Property<bool> underline{this, false};
    Property<float> letterSpacing{this, 0.0f};  ///< logical units between letters, beyond the face's own
    NotifyEvent onChange;

protected:
    /// Forget what was measured and rendered, and tell.
    virtual void invalidate() { requestUpdate(); }
    void update() override;
};

}  // namespace vanta::gui
