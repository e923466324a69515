#include <gtest/gtest.h>

#include "tests/gui/counter.hpp"
#include "tests/gui/test_interface.hpp"

namespace vanta::gui {
namespace {

TEST(Layout, KeepsWhatIsAnchored) {
    // A child from 10 to 30 in a parent that grows by 10 on both axes.
    const struct {
        int nearAnchor, farAnchor;
        float nearEdge, farEdge;
    } cases[] = {{1, 1, 10, 40}, {1, 0, 10, 30}, {0, 1, 20, 40}, {0, 0, 15, 35}};
    for (const auto& x : cases) {
        for (const auto& y : cases) {
            TestInterface ui;
            Control parent(ui), child(ui);
            parent.bounds = Rect{0, 0, 100, 100};
            child.bounds = Rect{10, 10, 30, 30};
            child.anchor = x.nearAnchor * anchor::kLeft + x.farAnchor * anchor::kRight +
                           y.nearAnchor * anchor::kTop + y.farAnchor * anchor::kBottom;
            child.parent = &parent;
            parent.setSize(110, 110);
            EXPECT_EQ(child.bounds.value(), (Rect{x.nearEdge, y.nearEdge, x.farEdge, y.farEdge}))
                << child.anchor;
        }
    }
}

TEST(Layout, TakesAHundredthAsTheSameSizeAndAThousandthAsTheSamePlace) {
    TestInterface ui;
    Control parent(ui), child(ui);
    test::Counter resizes;
    parent.bounds = Rect{0, 0, 100, 100};
    child.anchor = anchor::kAll;
    child.bounds = Rect{0, 0, 100, 100};
    child.parent = &parent;
    parent.onResize.addHandler(&resizes, &test::Counter::hear);
    parent.setWidth(100.005f);
    EXPECT_EQ(resizes.count, 0);
    EXPECT_EQ(child.bounds.value().right, 100);
    parent.setWidth(100.5f);
    EXPECT_EQ(resizes.count, 1);
    EXPECT_FLOAT_EQ(child.bounds.value().right, 100.495f);
    parent.setPosition({0.0005f, 0.0f});
    EXPECT_EQ(parent.bounds.value().left, 0.0f);
}

TEST(Layout, CountsWindowCoordinatesBelowTheRoot) {
    TestInterface ui;
    Control outer(ui), inner(ui);
    outer.bounds = Rect{10, 20, 110, 120};
    inner.bounds = Rect{5, 6, 15, 26};
    outer.parent = ui.root;
    inner.parent = &outer;
    EXPECT_EQ(inner.toWindow(Point{1, 1}), (Point{16, 27}));
    EXPECT_EQ(inner.windowBounds(), (Rect{15, 26, 25, 46}));
}

}  // namespace
}  // namespace vanta::gui
