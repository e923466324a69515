#include "gui/controls/control_bar.hpp"
#include "gui/controls/light.hpp"
#include "tests/gui/controls_fixture.hpp"

namespace vanta::gui {
namespace {

using ::testing::ElementsAre;

TEST_F(ControlsTest, BarKeepsItsChildrenInARow) {
    auto& bar = make<ControlBar>({0, 0, 200, 30});
    bar.spacing = 4.0f;
    bar.margin = 10.0f;
    Control* children[3];
    for (Control*& child : children) {
        child = &ui.make<Control>();
        child->bounds = Rect::ofSize(0, 0, 20, 10);
        child->parent = &bar;
    }
    const auto lefts = [&] {
        return std::vector{children[0]->bounds.value().left, children[1]->bounds.value().left,
                           children[2]->bounds.value().left};
    };
    EXPECT_THAT(lefts(), ElementsAre(10, 34, 58));
    EXPECT_EQ(children[1]->bounds.value().top, 10) << "in the middle";
    children[0]->setWidth(40);
    EXPECT_THAT(lefts(), ElementsAre(10, 54, 78));
    children[1]->visible = false;
    EXPECT_EQ(children[2]->bounds.value().left, 54);
    bar.reverse = true;
    EXPECT_EQ(children[0]->bounds.value().right, 190);
    bar.setWidth(300);
    EXPECT_EQ(children[0]->bounds.value().right, 290);
    bar.layout = ControlBar::Layout::Column;
    EXPECT_EQ(children[0]->bounds.value(), Rect::ofSize(130, 10, 40, 10));
}

TEST_F(ControlsTest, LampFlashesForAMoment) {
    auto& light = make<Light>({0, 0, 14, 14});
    light.flash();
    ui.advance(60);
    light.flash();
    ui.advance(60);
    EXPECT_EQ(light.brightness(), 255) << "begun anew";
    ui.advance(40);
    EXPECT_EQ(light.brightness(), 0);
}

TEST_F(ControlsTest, BackdropGrowsWithItsRightPart) {
    EXPECT_THROW(ui.loadBackdrop("NoSuchPicture"), std::exception);
    ui.loadBackdrop("LightOn");  // 14 wide
    const auto picture = ui.picture();
    const auto column = [&](int x) {
        std::vector<Pixel> pixels;
        for (int y = 0; y < 14; ++y) pixels.push_back(picture->row(y)[x]);
        return pixels;
    };
    EXPECT_EQ(column(0), column(14));
    EXPECT_EQ(column(13), column(27));
    EXPECT_EQ(column(399), column(13)) << "the last part ends as the picture does";
    EXPECT_NE(column(6), column(0));
}

}  // namespace
}  // namespace vanta::gui
