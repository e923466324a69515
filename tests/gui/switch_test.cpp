#include "gui/controls/switch.hpp"
#include "tests/gui/controls_fixture.hpp"

namespace vanta::gui {
namespace {

class SwitchTest : public ControlsTest {
protected:
    SwitchTest() : slider(make<Switch>({0, 0, 120, 24})) {
        slider.style().setImages("SwitchTrackNormal", "SwitchTrackActive", "SwitchThumbNormal",
                                 "SwitchThumbActive");
    }
    Switch& slider;
};

TEST_F(SwitchTest, ThumbFollowsTheValueAlongEitherAxis) {
    slider.maximum = 10;
    EXPECT_FLOAT_EQ(slider.trackLength(), 100.0f) << "half a thumb of 20 at each end";
    const struct {
        int value;
        float middle;
    } cases[] = {{0, 10}, {5, 60}, {10, 110}};
    for (const auto& c : cases) {
        slider.value = c.value;
        EXPECT_FLOAT_EQ(slider.thumbPosition(), c.middle);
        EXPECT_EQ(slider.valueAtPoint({c.middle, 12}), c.value);
    }
    EXPECT_EQ(slider.valueAtPoint({-50, 0}), 0);
    slider.bounds = Rect{0, 0, 24, 124};
    slider.trackStart = 20.0f;
    EXPECT_TRUE(slider.isVertical());
    EXPECT_FLOAT_EQ(slider.thumbPosition(), 20.0f) << "the highest value is on top";
    EXPECT_EQ(slider.valueAtPoint({0, 112}), 0);
}

TEST_F(SwitchTest, FewStepsJumpToAClickAndManyAreDragged) {
    slider.maximum = 10;
    slider.defaultValue = 3;
    press({100, 12});
    EXPECT_EQ(slider.value, 0);
    release({100, 12});
    EXPECT_EQ(slider.value, 9) << "at the release";
    press({40, 12});
    release({40, 200});
    EXPECT_EQ(slider.value, 9) << "released elsewhere";
    press({100, 12}, modifier::kCtrl);
    release({100, 12});
    EXPECT_EQ(slider.value, 9) << "the reset is for what cannot be hit otherwise";

    slider.maximum = 4096;
    slider.defaultValue = 100;
    slider.value = 2048;
    take();
    press({100, 12});
    ui.advance(500);
    move({110, 12});
    EXPECT_GT(slider.value, 2048) << "from anywhere, relative to the press";
    release({110, 12});
    take();
    press({100, 12}, modifier::kCtrl);
    release({100, 12});
    EXPECT_THAT(take().back(), "end 100");
    turnWheel({50, 12}, 1);
    EXPECT_GT(slider.value, 100);
    EXPECT_FALSE(slider.isDraggingThumb());
}

}  // namespace
}  // namespace vanta::gui
