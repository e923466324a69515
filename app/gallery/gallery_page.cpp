#include "app/gallery/gallery_page.hpp"

#include "app/gallery/section.hpp"
#include "foundation/resource.hpp"
#include "gui/artwork/artwork_resources.hpp"
#include "gui/controls/image.hpp"
#include "gui/tree/root_control.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gallery {
namespace {

void addTitleBar(const Workshop& shop) {
    auto& bar = shop.ui().make<gui::Image>();
    bar.stretchMode = gui::Image::StretchMode::Stretched;
    bar.tile = 100.0f;
    bar.load("LogoBar");
    bar.bounds = gui::Rect::ofSize(0.0f, 0.0f, kPageWidth, 48.0f);
    bar.parent = &shop.parent;
}

gui::Animator& makeAnimator(gui::UserInterface& ui) {
    auto& animator = ui.make<gui::Animator>();
    animator.framesPerSecond = 60;
    animator.running = true;
    return animator;
}

}  // namespace

void buildGallery(gui::UserInterface& ui, bool animated) {
    addResources(gui::artworkResources());
    ui.loadBackdrop("Background");
    const Workshop shop{ui.rootControl(), animated ? &makeAnimator(ui) : nullptr, ui.make<gui::ValueEntry>()};
    addTitleBar(shop);
    addKnobs(shop, {20.0f, 74.0f});
    addButtons(shop, {20.0f, 208.0f});
    addPanels(shop, {440.0f, 90.0f});
    addLabels(shop, {20.0f, 390.0f});
    gui::ValueControl& slider = addSliders(shop, {612.0f, 74.0f});
    addCurves(shop, gui::Rect::ofSize(20.0f, 490.0f, 760.0f, 90.0f), slider);
    addDialogs(shop, {676.0f, 238.0f});
}

}  // namespace vanta::gallery
