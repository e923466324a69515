#include <gmock/gmock.h>

#include "gui/animation/fade_animation.hpp"
#include "gui/animation/move_animation.hpp"
#include "gui/animation/value_animation.hpp"
#include "gui/controls/overlay.hpp"
#include "gui/controls/rollover_manager.hpp"
#include "tests/gui/counter.hpp"
#include "tests/gui/test_interface.hpp"

namespace vanta::gui {
namespace {

using test::Counter;
using ::testing::ElementsAre;

/// An animator at 100 frames a second.
class AnimationTest : public ::testing::Test {
protected:
    AnimationTest() {
        animator.framesPerSecond = 100;
        animator.running = true;
        control.bounds = Rect{0, 0, 10, 10};
    }
    void frame() { ui.advance(10); }

    TestInterface ui;
    Animator animator{ui};
    AnimatedControl control{ui, &animator};
};

struct Counted : AnimatedObject {
    Counted(int& calledTimes, int& deletedTimes) : calls(calledTimes), deletions(deletedTimes) {}
    ~Counted() override { ++deletions; }
    void animate() override {
        ++calls;
        if (then) then();
    }
    void deleteSelf() override { delete this; }
    int& calls;
    int& deletions;
    std::function<void()> then;
};

TEST(AnimationMotion, RunsFromNothingToAll) {
    for (const auto motion : {AnimationMotion::Linear, AnimationMotion::Smooth, AnimationMotion::EaseIn,
                              AnimationMotion::EaseOut}) {
        EXPECT_NEAR(motionAt(motion, 0.0f), 0.0f, 1e-6f);
        EXPECT_NEAR(motionAt(motion, 1.0f), 1.0f, 1e-6f);
        for (float t = 0.0f; t < 0.99f; t += 0.01f)
            EXPECT_LT(motionAt(motion, t), motionAt(motion, t + 0.01f));
    }
    EXPECT_NEAR(motionAt(AnimationMotion::EaseIn, 0.5f), (0.7 * 0.7 * 0.7 * 0.7 - 0.0256) / (1.0 - 0.0256),
                1e-6);
    EXPECT_FLOAT_EQ(motionAt(AnimationMotion::EaseOut, 0.25f),
                    1.0f - motionAt(AnimationMotion::EaseIn, 0.75f));
}

TEST_F(AnimationTest, FadesWithinItsTimeAndTakesOverWithoutAJump) {
    control.fadeTo(0);
    ui.advance(100);
    EXPECT_EQ(control.alpha, 127) << "cut, not rounded";
    control.fadeTo(255, 100);
    ui.advance(50);
    EXPECT_EQ(control.alpha, 191);
    ui.advance(200);
    EXPECT_EQ(control.alpha, 255);
    control.fadeTo(100);
    frame();
    const int reached = control.alpha;
    control.fadeTo(reached);
    ui.advance(500);
    EXPECT_EQ(control.alpha, reached) << "a fade to where it is stops the one that runs";
    AnimatedControl still(ui);
    still.fadeTo(10);
    EXPECT_EQ(still.alpha, 10);
}

TEST_F(AnimationTest, MovesSoftlyAndInterpolatesValues) {
    new MoveAnimation(control, {100, 0});
    int number = 0;
    Property<Rect> rect{nullptr, Rect{}};
    new ValueAnimation<int>(animator, &control, number, 10);
    new ValueAnimation<Rect, Property<Rect>>(animator, nullptr, rect, {0, 0, 10, 20});
    ui.advance(50);
    EXPECT_FLOAT_EQ(control.bounds.value().left, 15.625f);
    EXPECT_EQ(number, 3) << "2.5 is rounded";
    EXPECT_EQ(rect.value(), (Rect{0, 0, 2.5f, 5}));
    ui.advance(150);
    EXPECT_EQ(control.bounds.value(), (Rect{100, 0, 110, 10}));
    EXPECT_EQ(number, 10);
    EXPECT_EQ(rect.value(), (Rect{0, 0, 10, 20}));
}

TEST_F(AnimationTest, FinishesOnceAndEndsWithItsControl) {
    Counter finish;
    auto* fade = new FadeAnimation(control, 0);
    fade->duration = 0;
    fade->onFinished.setHandler(&finish, &Counter::hear);
    frame();
    frame();
    EXPECT_EQ(finish.count, 1);
    EXPECT_EQ(control.alpha, 0);
    auto gone = std::make_unique<AnimatedControl>(ui, &animator);
    fade = new FadeAnimation(*gone, 0);
    fade->onFinished.setHandler(&finish, &Counter::hear);
    gone.reset();
    ui.advance(1000);
    EXPECT_EQ(finish.count, 1);
}

TEST_F(AnimationTest, ChangesOfTheListWithinAFrame) {
    int calls[4] = {}, deletions[4] = {};
    const char keys[2] = {};
    auto* leaver = new Counted(calls[0], deletions[0]);
    auto* victim = new Counted(calls[1], deletions[1]);
    auto* comer = new Counted(calls[2], deletions[2]);
    animator.add(leaver, nullptr, nullptr);
    animator.add(victim, &control, &keys[0]);
    animator.add(new Counted(calls[3], deletions[3]), &control, nullptr);
    leaver->then = [&] {
        animator.add(comer, nullptr, &keys[0]);
        animator.removeAll(&control);
        animator.remove(leaver);
        EXPECT_EQ(deletions[0] + deletions[1], 0) << "not under their own feet";
    };
    frame();
    EXPECT_THAT(calls, ElementsAre(1, 0, 0, 0));
    EXPECT_THAT(deletions, ElementsAre(1, 1, 0, 1));
    frame();
    EXPECT_THAT(calls, ElementsAre(1, 0, 1, 0));
    animator.cancel(nullptr);
    EXPECT_EQ(deletions[2], 0) << "no target is nobody's";
    animator.cancel(&keys[0]);
    EXPECT_EQ(deletions[2], 1);
}

TEST_F(AnimationTest, ForgetsWhoDiesByItself) {
    int calls = 0, deletions = 0;
    Counted first(calls, deletions);
    auto second = std::make_unique<Counted>(calls, deletions);
    for (Counted* each : {&first, second.get()}) animator.add(each, nullptr, nullptr);
    first.then = [&] {
        animator.forget(second.get());
        second.reset();
    };
    frame();
    EXPECT_EQ(calls, 1);
    first.then = nullptr;
    frame();
    EXPECT_EQ(calls, 2);
    animator.forget(&first);
}

TEST_F(AnimationTest, StopsAndKeepsItsRate) {
    int calls = 0, deletions = 0;
    auto* counted = new Counted(calls, deletions);
    animator.add(counted, nullptr, nullptr);
    animator.framesPerSecond = 15;
    ui.advance(660);
    EXPECT_EQ(calls, 10);
    animator.running = false;
    ui.advance(1000);
    EXPECT_EQ(calls, 10);
    animator.remove(counted);
}

TEST_F(AnimationTest, RolloverFadesInFasterThanOut) {
    RolloverManager rollover(control);
    rollover.restAlpha = 155;
    rollover.setActive(true);
    ui.advance(50);
    EXPECT_EQ(rollover.mix(), 128);
    EXPECT_EQ(rollover.alpha(), 155 + 100 * 128 / 255);
    ui.advance(50);
    rollover.setActive(false);
    ui.advance(290);
    EXPECT_GT(rollover.mix(), 0);
    ui.advance(10);
    EXPECT_EQ(rollover.mix(), 0);
    control.setAnimator(nullptr);
    rollover.setActive(true);
    EXPECT_EQ(rollover.mix(), 255);
}

TEST_F(AnimationTest, OverlayPicksTargetsAndFadesAway) {
    std::vector<std::string> log;
    LoggedControl below(ui, "below", log, {0, 0, 100, 100}, ui.root);
    LoggedControl picture(ui, "picture", log, {20, 20, 80, 60}, ui.root);
    LoggedControl refused(ui, "refused", log, {60, 20, 80, 60}, ui.root);
    picture.alpha = 200;
    auto& overlay = ui.make<Overlay>(&animator);
    overlay.addTarget(below, Overlay::Behaviour::HitAnywhere);
    overlay.addTarget(picture, Overlay::Behaviour::HitPicture);
    overlay.addTarget(refused, Overlay::Behaviour::Refused);
    EXPECT_EQ(overlay.targetAt({30, 30}), 0) << "too faint to be hit";
    picture.alpha = 255;
    EXPECT_EQ(overlay.targetAt({30, 30}), 1);
    EXPECT_EQ(overlay.targetAt({70, 30}), -1);
    EXPECT_EQ(overlay.targetCenter(0), (Point{50, 50 - ((100 + 40) / 4.0f - 1)}))
        << "beside the one inside it";
    EXPECT_EQ(overlay.targetCenter(2), (Point{70, 40}));
    below.visible = false;
    EXPECT_EQ(overlay.targetAt({5, 5}), -1);

    overlay.show();
    EXPECT_EQ(overlay.alpha, 1);
    ui.advance(150);
    EXPECT_EQ(overlay.alpha, 255);
    EXPECT_EQ(overlay.bounds.value(), ui.root->localBounds());
    overlay.hide();
    ui.advance(200);
    EXPECT_EQ(ui.root->children().size(), 4u) << "it goes when nobody is inside it";
    ui.drainRelay();
    EXPECT_EQ(ui.root->children().size(), 3u);
}

TEST(Animator, MayGoBeforeOrAfterWhatItDrives) {
    for (const bool animatorFirst : {true, false}) {
        TestInterface ui;
        auto& animator = ui.make<Animator>();
        auto& control = ui.make<AnimatedControl>(&animator);
        control.fadeTo(0);
        if (animatorFirst) {
            delete &animator;
            EXPECT_EQ(control.animator(), nullptr);
        }
    }
}

}  // namespace
}  // namespace vanta::gui
