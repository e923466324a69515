#include "tests/host/aax/aax_fixture.hpp"

namespace vanta::test {
namespace {

using Answers = AaxInstance::Answers;

/// On every road the four end at one value, whenever the host answers.
class AaxValues : public AaxFixture, public testing::WithParamInterface<Answers> {};

TEST_P(AaxValues, FromAutomation) {
    AaxSession session(component(), GetParam());
    for (int i = 0; i < session.count(); ++i) {
        for (const double position : {0.0, 1.0, 0.5, 1.0 / 3.0, 0.123456789012345}) {
            ASSERT_EQ(session.host.setValue(std::to_string(i), position), AAX_SUCCESS);
            session.idle();
            const float value = session.model(i).value();
            EXPECT_EQ(value, valueAt(session.model(i), position)) << i;
            EXPECT_EQ(session.audio(i).value(), value) << i;
            EXPECT_EQ(session.host.value(std::to_string(i)), position) << "a host's own is not corrected";
        }
    }
}

TEST_P(AaxValues, FromMidi) {
    AaxSession session(component(), GetParam());
    auto& controllers = session.plugin().statics().controllers;
    for (int i = 0; i < session.count(); ++i) {
        if (&session.audio(i) == session.processor().receiveMidiParameter) continue;
        controllers.assign(20, i);
        for (const int data : {0, 127, 64, 1, 99}) {
            session.send({{5, 3, {0xB0, 20, static_cast<std::uint8_t>(data), 0}}});
            session.playSilence();
            const float expected = session.audio(i).denormalize(static_cast<float>(data) * (1.0f / 127.0f));
            session.idle();
            session.expectAgreement(i, expected);
        }
    }
}

TEST_P(AaxValues, FromAPresetByHandOrByProgramChange) {
    AaxSession session(component(), GetParam());
    session.plugin().lockOutput.setMapped(false);
    session.plugin().statics().settings.enableMidiProgramChanges = true;
    session.idle();
    const auto before = session.plugin().parameterValues();
    const auto entry = session.plugin().statics().presetAt(0, 3);
    ASSERT_TRUE(entry);
    ASSERT_TRUE(session.plugin().loadPreset(*entry));
    session.idle();
    EXPECT_NE(session.plugin().parameterValues(), before);
    for (int i = 0; i < session.count(); ++i) session.expectAgreement(i, session.model(i).value());
    EXPECT_EQ(session.plugin().presetState().name(), entry->name);

    const auto other = session.plugin().statics().presetAt(0, 5);
    session.send({{0, 2, {0xC0, 5, 0, 0}}});
    session.playSilence();
    session.idle();
    EXPECT_EQ(session.plugin().presetState().name(), other->name);
    for (int i = 0; i < session.count(); ++i) session.expectAgreement(i, session.model(i).value());
}

TEST_P(AaxValues, FromAControllerThatWasLearned) {
    struct Learning final : GenericPlugin::Listener {
        explicit Learning(AaxSession& learned) : session(learned) {}
        void onEvent(const PluginEvent& event) override {
            const auto* const moved = std::get_if<ControllerMoved>(&event);
            const auto held = session.plugin().statics().lock();
            if (moved && session.plugin().statics().controllers.targetOf(moved->number) != 0)
                session.plugin().statics().controllers.assign(moved->number, 0);
        }
        AaxSession& session;
    };
    AaxSession session(component(), GetParam());
    Learning interface(session);
    session.plugin().setListener(&interface);
    for (const int data : {3, 127}) {
        session.send({{0, 3, {0xB0, 74, static_cast<std::uint8_t>(data), 0}}});
        session.playSilence();
        session.adapter().syncLevels();
        session.idle();
        session.adapter().syncLevels();
    }
    session.expectAgreement(0, 30.0f);
    session.plugin().setListener(nullptr);
}

INSTANTIATE_TEST_SUITE_P(Hosts, AaxValues, testing::Values(Answers::AtOnce, Answers::OnIdle),
                         [](const auto& host) {
                             return host.param == Answers::AtOnce ? "AtOnce" : "OnIdle";
                         });

class AaxParameters : public AaxFixture {
protected:
    std::string text(AaxSession& session, const std::string& id, double position, int maxLength = 0) {
        char shown[64];
        EXPECT_EQ(session.host.parameters().GetParameterStringFromValue(id.c_str(), position, shown,
                                                                        sizeof(shown), maxLength),
                  AAX_SUCCESS);
        return shown;
    }
};

TEST_F(AaxParameters, AnEchoLeavesTheModelAloneAndReachesTheProcessor) {
    AaxSession session(component());
    session.plugin().gain.setValue(10.0f, 0);
    session.idle();
    session.expectAgreement(0, 10.0f);
    session.host.setValue("0", 10.0 / 30.0 + 2.7e-5);
    EXPECT_EQ(session.model(0).value(), 10.0f);
    EXPECT_NEAR(session.audio(0).value(), 10.00081f, 2e-6f);
    session.host.setValue("0", 10.0 / 30.0 + 2.9e-5);
    EXPECT_NEAR(session.model(0).value(), 10.00087f, 2e-6f);
    EXPECT_EQ(session.audio(0).value(), session.model(0).value());
}

TEST_F(AaxParameters, AreToldAsTheTableOfParametersHasThem) {
    AaxSession session(component());
    AAX_IEffectParameters& host = session.host.parameters();
    std::int32_t count = 0;
    AAX_CParamID id = nullptr;
    ASSERT_EQ(host.GetNumberOfParameters(&count), AAX_SUCCESS);
    ASSERT_EQ(count, session.count() + 1);
    ASSERT_EQ(host.GetParameterIDFromIndex(0, &id), AAX_SUCCESS);
    EXPECT_STREQ(id, "MasterBypassID");
    EXPECT_EQ(text(session, id, 0.0) + text(session, id, 1.0), "bypasson");
    for (int i = 0; i < session.count(); ++i) {
        const AbstractPluginParameter& parameter = session.model(i);
        SCOPED_TRACE(parameter.name());
        const bool continuous = parameter.kind() == AbstractPluginParameter::Kind::Float;
        const int range = static_cast<int>(parameter.maximum() - parameter.minimum());
        std::int32_t steps = 0;
        bool isContinuous = false;
        bool isAutomatable = false;
        double initial = 0.0;
        char name[64];
        ASSERT_EQ(host.GetParameterIDFromIndex(i + 1, &id), AAX_SUCCESS);
        EXPECT_EQ(id, std::to_string(i));
        host.GetParameterName(id, name, sizeof(name));
        host.GetParameterNumberOfSteps(id, &steps);
        host.GetParameterIsContinuous(id, &isContinuous);
        host.GetParameterIsAutomatable(id, &isAutomatable);
        host.GetParameterDefaultNormalizedValue(id, &initial);
        EXPECT_EQ(name, parameter.displayName);
        EXPECT_EQ(steps, continuous ? 720 : range + 1);
        EXPECT_EQ(isContinuous, continuous);
        EXPECT_EQ(isAutomatable, parameter.automatable);
        EXPECT_EQ(session.host.isAutomatable(id), parameter.automatable);
        EXPECT_EQ(initial, hostPosition(parameter, parameter.defaultValue()));
        for (const double position : {0.0, 1.0, 0.4}) {
            const std::string shown = text(session, id, position);
            EXPECT_EQ(shown, parameter.text(valueAt(parameter, position)));
            EXPECT_LE(text(session, id, position, 4).size(), 4u);
            double back = -1.0;
            ASSERT_EQ(host.GetParameterValueFromString(id, shown.c_str(), &back), AAX_SUCCESS) << shown;
            EXPECT_EQ(text(session, id, back), shown);
        }
    }
    double ignored = 0.0;
    EXPECT_EQ(host.GetParameterValueFromString("1", "no such style", &ignored), AAX_ERROR_INVALID_ARGUMENT);
    std::int32_t before = 0;
    std::int32_t after = 0;
    host.GetNumberOfChanges(&before);
    session.host.setValue("0", 0.25);
    session.host.setValue("0", 0.25);
    host.GetNumberOfChanges(&after);
    EXPECT_EQ(after, before + 1);
}

TEST_F(AaxParameters, TheLatencyIsTheHostsAsSoonAsItIdles) {
    AaxSession session(component());
    EXPECT_EQ(session.host.latency(), session.plugin().latency());
    for (const double position : {0.2, 1.0, 0.0}) {
        session.host.setValue("9", position);
        session.host.idle();
        EXPECT_EQ(session.host.latency(), session.plugin().latency());
        EXPECT_EQ(session.host.latency(), session.processor().latency());
    }
    EXPECT_GE(session.host.latencyReports(), 4);
}

TEST_F(AaxParameters, CurvesAndCustomDataAreAnsweredAsTold) {
    AaxSession session(component());
    AAX_IEffectParameters& host = session.host.parameters();
    float range[4]{};
    const auto rangeOf = [&](const char(&type)[5]) {
        return host.GetCurveDataDisplayRange(AAX_FourChars(type), &range[0], &range[1], &range[2], &range[3]);
    };
    EXPECT_EQ(rangeOf("AXdy"), AAX_SUCCESS);
    EXPECT_EQ(std::vector(range, range + 4), (std::vector{-60.0f, 0.0f, -60.0f, 0.0f}));
    EXPECT_EQ(rangeOf("AXeq"), AAX_SUCCESS);
    EXPECT_EQ(std::vector(range, range + 4), (std::vector{10.0f, 20000.0f, -30.0f, 30.0f}));
    EXPECT_EQ(rangeOf("AXxx"), -20009);
    EXPECT_EQ(host.GetCurveData(AAX_FourChars("AXdy"), range, 4, range), -20009);
    EXPECT_EQ(host.GetCurveData(AAX_FourChars("AXxx"), range, 4, range), -20009);
    GenericPlugin* model = nullptr;
    std::uint32_t written = 0;
    EXPECT_EQ(host.GetCustomData(0, sizeof(model), &model, &written), AAX_SUCCESS);
    EXPECT_EQ(model, &session.plugin());
    EXPECT_EQ(written, sizeof(model));
    EXPECT_EQ(host.GetCustomData(0, 2, &model, &written), -20009);
    EXPECT_EQ(host.GetCustomData(1, sizeof(model), &model, &written), -20009);
}

}  // namespace
}  // namespace vanta::test
