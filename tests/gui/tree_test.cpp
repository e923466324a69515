#include <gmock/gmock.h>

#include <algorithm>

#include "gui/tree/flexible_control.hpp"
#include "tests/gui/test_interface.hpp"

namespace vanta::gui {
namespace {

using ::testing::ElementsAre;
using Log = std::vector<std::string>;

/// Writes down what it is told of others.
class Watcher : public Control {
public:
    Watcher(UserInterface& interface, Log& events) : Control(interface), log(events) {}
    void childChanged(Control* child, Change change) override {
        log.push_back(std::to_string(static_cast<int>(change)) + (child ? "" : " all"));
        Control::childChanged(child, change);
    }
    Log& log;
};

TEST(ControlTree, TellsParentAndObserversOfEveryChange) {
    TestInterface ui;
    Log told, observed;
    Watcher parent(ui, told), observer(ui, observed);
    parent.bounds = Rect{0, 0, 100, 100};
    auto& child = ui.make<Control>();
    child.bounds = Rect{0, 0, 10, 10};
    child.addObserver(observer);
    child.parent = &parent;
    child.opaque = true;
    child.setLeft(20);
    child.setLeft(20.0005f);
    child.alpha = 100;
    child.visible = false;
    child.visible = true;
    child.parent = nullptr;
    EXPECT_THAT(told, ElementsAre("0", "6", "4", "6", "5", "3", "3", "1"));
    EXPECT_THAT(observed, ElementsAre("2", "6", "4", "6", "5", "3", "3", "2"));
    delete &child;
    EXPECT_EQ(observed.size(), 8u);
}

TEST(ControlTree, KeepsTheOrderItIsGiven) {
    TestInterface ui;
    Log log;
    LoggedControl a(ui, "a", log), b(ui, "b", log), c(ui, "c", log);
    Control parent(ui);
    const auto order = [&] {
        std::string names;
        for (Control* child : parent.children()) names += static_cast<LoggedControl*>(child)->name;
        return names;
    };
    for (Control* child : {&a, &b}) child->parent = &parent;
    parent.setInsertIndex(1);
    c.parent = &parent;
    EXPECT_EQ(order(), "acb");
    const struct {
        LoggedControl& moved;
        int index;
        const char* result;
    } cases[] = {{b, 0, "bac"}, {b, 1, "abc"}, {a, 3, "bca"}, {c, -1, "bca"}, {c, 4, "bca"}, {c, 2, "bac"}};
    for (const auto& step : cases) {
        parent.moveChild(step.moved, step.index);
        EXPECT_EQ(order(), step.result);
    }
    b.toFront();
    EXPECT_EQ(order(), "acb");
}

TEST(ControlTree, RefusesAParentInsideItself) {
    TestInterface ui;
    Control outer(ui), inner(ui);
    outer.parent = ui.root;
    inner.parent = &outer;
    outer.parent = &inner;
    EXPECT_EQ(outer.parent.value(), ui.root);
    EXPECT_THAT(inner.children(), ElementsAre());
}

TEST(ControlTree, RemovesAllBelowAndLetsGoOfThem) {
    TestInterface ui;
    Log log;
    Watcher panel(ui, log);
    panel.bounds = Rect{10, 10, 110, 110};
    panel.parent = ui.root;
    // Goes after the one with the focus, and has somebody below it as well.
    auto& sibling = ui.make<LoggedControl>("sibling", log, Rect{60, 60, 70, 70}, &panel);
    ui.make<LoggedControl>("below", log, Rect{0, 0, 5, 5}, &sibling);
    auto& group = ui.make<LoggedControl>("group", log, Rect{0, 0, 50, 50}, &panel);
    auto& leaf = ui.make<LoggedControl>("leaf", log, Rect{0, 0, 20, 20}, &group);
    leaf.opaque = true;
    ui.root->platformMouseDown(kLeftPress, {15, 15}, 0);
    leaf.takeFocus();
    ASSERT_EQ(ui.root->mouseCapture(), &leaf);
    log.clear();
    ui.root->takeDirtyRect();
    panel.removeAllChildren();
    EXPECT_EQ(ui.root->mouseCapture(), nullptr);
    EXPECT_EQ(ui.root->focusedControl(), nullptr);
    EXPECT_EQ(panel.hovered(), &panel);
    EXPECT_TRUE(panel.childrenOpaque().isEmpty());
    EXPECT_EQ(ui.root->takeDirtyRect(), (Rect{0, 0, 400, 300}.intersected({7, 7, 110, 110})));
    EXPECT_THAT(log, ElementsAre("6", "1 all"));
    ui.root->platformMouseMove({300, 200}, 0);
}

TEST(ControlTree, InterfaceDeletesWhatIsLeft) {
    struct Counted : LoggedControl {
        using LoggedControl::LoggedControl;
        ~Counted() override { note("gone"); }
    };
    Log log;
    {
        TestInterface ui;
        auto& parent = ui.make<Counted>("parent", log, Rect{0, 0, 50, 50}, ui.root);
        auto& child = ui.make<Counted>("child", log, Rect{0, 0, 50, 50}, &parent);
        child.hint = std::string("help");
        ui.root->platformMouseDown(kLeftPress, {5, 5}, 0);
        child.takeFocus();
        ui.postDeferred(child, 1);
    }
    EXPECT_EQ(std::ranges::count(log, "parent gone") + std::ranges::count(log, "child gone"), 2);
}

TEST(Component, HearsOfTheEndOfWhatItIsLinkedTo) {
    struct Linked : Component {
        using Component::Component;
        void linkRemoved(Component* other) override { gone.push_back(other == expected); }
        const Component* expected = nullptr;
        std::vector<bool> gone;
    };
    TestInterface ui;
    Linked a(ui);
    auto b = std::make_unique<Linked>(ui);
    Component::link(a, *b);
    Component::link(*b, a);
    a.expected = b.get();
    b.reset();
    EXPECT_THAT(a.gone, ElementsAre(true));
}

TEST(FlexibleControl, ScalesItsChildrenThroughAnySize) {
    TestInterface ui;
    FlexibleControl box(ui);
    Control child(ui);
    box.bounds = Rect{0, 0, 100, 50};
    child.bounds = Rect{10, 10, 30, 20};
    child.anchor = anchor::kAll;
    child.parent = &box;
    box.setSize(200, 50);
    EXPECT_EQ(child.bounds.value(), (Rect{20, 10, 60, 20}));
    box.setSize(0, 0);
    box.setSize(100, 100);
    EXPECT_EQ(child.bounds.value(), (Rect{10, 20, 30, 40}));
}

}  // namespace
}  // namespace vanta::gui
