#include "gui/controls/modifier_map.hpp"
#include "host/aax/aax_plugin_editor.hpp"
#include "plugin/settings/settings_store.hpp"
#include "tests/host/aax/aax_fixture.hpp"

namespace vanta::test {
namespace {

struct Container final : AAX_IViewContainer {
    void* GetPtr() override { return window; }
    AAX_Result GetModifiers(std::uint32_t* bits) override {
        *bits = modifiers;
        return AAX_SUCCESS;
    }
    AAX_Result SetViewSize(AAX_Point* wanted) override {
        size = *wanted;
        return resizes;
    }
    AAX_Result HandleParameterMouseDown(AAX_CParamID id, std::uint32_t bits) override {
        pressed += std::string(id) + ":" + std::to_string(bits) + " ";
        return takesPress;
    }

    int dummy = 0;
    void* window = &dummy;
    std::uint32_t modifiers = 0;
    AAX_Point size{};
    AAX_Result resizes = AAX_SUCCESS;
    AAX_Result takesPress = AAX_SUCCESS;
    std::string pressed;
};

/// An interface with a control for each parameter, side by side.
struct Interface final : EditorInterface {
    explicit Interface(int& counter) : alive(counter) { ++alive; }
    ~Interface() override { --alive; }
    double scale() const override { return 1.5; }
    int parameterAt(gui::Point point) const override { return point.y < 0 ? -1 : static_cast<int>(point.x); }
    void idle() override {}
    int& alive;
};

class AaxEditor : public AaxFixture {
protected:
    EditorPlatform platform() {
        return {[this](EditorListener&, gui::UserInterface::MouseHook&, GenericPlugin&, NativeWindow) {
                    return std::make_unique<Interface>(alive_);
                },
                [this] { return monitors_; }};
    }

    int alive_ = 0;
    std::vector<double> monitors_;
    Container container_;
};

TEST_F(AaxEditor, GesturesReachModelHostAndProcessor) {
    for (const auto answers : {AaxInstance::Answers::AtOnce, AaxInstance::Answers::OnIdle}) {
        AaxSession session(component(), answers);
        AaxPluginEditor editor(platform());
        ASSERT_EQ(editor.Initialize(&session.host.parameters()), AAX_SUCCESS);
        ASSERT_EQ(editor.SetViewContainer(&container_), AAX_SUCCESS);
        for (int i = 0; i < session.count(); ++i) {
            editor.beginGesture(i);
            for (const float share : {0.1f, 0.70710678f, 1.0f / 3.0f}) {
                const AbstractPluginParameter& parameter = session.model(i);
                editor.setParameter(i, parameter.denormalize(share));
                session.idle();
                session.expectAgreement(i, parameter.value());
            }
            editor.endGesture(i);
            const std::string id = std::to_string(i);
            EXPECT_EQ(session.host.takeGestures(),
                      (std::vector<AaxInstance::Gesture>{{id, true}, {id, false}}));
        }
        editor.SetViewContainer(nullptr);
    }
    EXPECT_EQ(alive_, 0);
}

TEST_F(AaxEditor, ItsSizeFollowsTheScale) {
    AaxSession session(component());
    AaxPluginEditor editor(platform());
    AAX_Point size{};
    EXPECT_EQ(editor.GetViewSize(&size), AAX_ERROR_NULL_OBJECT) << "there is no model yet";
    ASSERT_EQ(editor.Initialize(&session.host.parameters()), AAX_SUCCESS);
    container_.window = nullptr;
    ASSERT_EQ(editor.SetViewContainer(&container_), AAX_SUCCESS);
    EXPECT_EQ(alive_, 0) << "no window, no interface";
    session.plugin().statics().settings.retinaEnabled = 1;
    monitors_ = {};
    EXPECT_EQ(editor.interfaceScale(), 1.0);
    monitors_ = {3.0, 2.5};
    EXPECT_EQ(editor.interfaceScale(), 2.0);
    monitors_ = {3.0, 1.25};
    EXPECT_EQ(editor.interfaceScale(), 1.25);
    session.plugin().statics().settings.retinaEnabled = 175;
    EXPECT_EQ(editor.interfaceScale(), 1.75);
    editor.SetViewContainer(nullptr);
    container_.window = &container_;
    ASSERT_EQ(editor.SetViewContainer(&container_), AAX_SUCCESS);
    EXPECT_EQ(alive_, 1);
    EXPECT_EQ(editor.GetViewSize(&size), AAX_SUCCESS);
    EXPECT_EQ(size.horizontal, 1.5f * static_cast<float>(session.plugin().interfaceWidth()));
    EXPECT_EQ(size.vertical, 1.5f * static_cast<float>(session.plugin().interfaceHeight()));
    EXPECT_TRUE(editor.resize(1000, 600));
    EXPECT_EQ(container_.size.horizontal, 1500.0f);
    EXPECT_EQ(container_.size.vertical, 900.0f);
    container_.resizes = -1;
    EXPECT_FALSE(editor.resize(1000, 600));
    editor.SetViewContainer(nullptr);
    EXPECT_EQ(alive_, 0);
}

TEST_F(AaxEditor, OnlyTheHostsOwnPressesGoToTheHost) {
    AaxSession session(component());
    AaxPluginEditor editor(platform());
    editor.Initialize(&session.host.parameters());
    editor.SetViewContainer(&container_);
    const auto press = [&](int modifiers, float y = 0.0f) {
        return editor.mousePressed(0, {4.0f, y}, modifiers);
    };
    for (const int mine : {0, 1, 2, 4, 128, 4 | 2, 1 | 4 | 128}) EXPECT_TRUE(press(mine)) << mine;
    EXPECT_TRUE(press(4 | 128, -1.0f)) << "nothing is there";
    EXPECT_EQ(container_.pressed, "");
    EXPECT_FALSE(press(4 | 128));
    EXPECT_FALSE(press(4 | 128 | 2));
    EXPECT_EQ(container_.pressed, "4:10 4:14 ");
    container_.takesPress = -1;
    EXPECT_TRUE(press(4 | 128));
    container_.modifiers = 2;
    EXPECT_EQ(editor.withHostModifiers(1), 1 | 128);
    container_.modifiers = 4;
    EXPECT_EQ(editor.withHostModifiers(1), 1 | 2);
    editor.SetViewContainer(nullptr);
}

TEST_F(AaxEditor, TheModifierKeysFollowTheHostUnlessTheUserSaysOtherwise) {
    gui::ModifierMap& map = gui::ModifierMap::shared();
    const auto behaviours = [&map] {
        return std::vector{map.behaviour(2), map.behaviour(4), map.behaviour(1), map.behaviour(5)};
    };
    EXPECT_EQ(behaviours(), (std::vector{1, 2, 4, 6}));
    for (const int modifiers : {1, 2, 4, 5}) map.set(modifiers, 0);
    ASSERT_TRUE(SettingsStore(vantaProduct().key()).write("UseProToolsShortcuts", 0));
    AaxCollection again;
    ASSERT_EQ(describeEffects(&again), AAX_SUCCESS);
    EXPECT_EQ(behaviours(), (std::vector{0, 0, 0, 0}));
}

}  // namespace
}  // namespace vanta::test
