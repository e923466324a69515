#include "gui/controls/overlay.hpp"
#include "gui/graphics/canvas.hpp"
#include "gui/tree/region.hpp"

namespace vanta::gui {

void Overlay::paint(Canvas& canvas) {
    canvas.fillRect(localBounds(), sheetColor);
    const Canvas::State state = canvas.state();
    const Point here = toWindow(Point{});
    for (const int index : order_) {
        Control* control = targets_[static_cast<std::size_t>(index)].control;
        if (!control || !control->isShown()) continue;
        const Point offset = control->toWindow(Point{}) - here;
        canvas.origin = state.origin + offset;
        canvas.clip = commonPart(state.clip.translated(Point{} - offset), control->localBounds());
        if (!canvas.clip.value().isEmpty()) control->paintState(canvas, targetState(index));
        canvas.setState(state);
    }
}

}  // namespace vanta::gui
