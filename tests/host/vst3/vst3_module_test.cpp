#include <fmt/format.h>

#include <memory>

#include "tests/host/vst3/vst3_fixture.hpp"

namespace vanta::test {
namespace {

TEST_F(Vst3, TheFactorySaysTheSameInAllItsGenerations) {
    const Vst3Module module;
    auto** const factory = module.latestFactory();
    auto** const first = module.factory();
    auto** const second = static_cast<v3_plugin_factory_2**>(static_cast<void*>(factory));
    ASSERT_EQ(v3_cpp_obj(first)->num_classes(first), 1);
    v3_class_info one{};
    v3_class_info_2 two{};
    v3_class_info_3 three{};
    ASSERT_EQ(v3_cpp_obj(first)->get_class_info(first, 0, &one), V3_OK);
    ASSERT_EQ(v3_cpp_obj(second)->get_class_info_2(second, 0, &two), V3_OK);
    ASSERT_EQ(v3_cpp_obj(factory)->get_class_info_utf16(factory, 0, &three), V3_OK);
    EXPECT_TRUE(v3_tuid_match(one.class_id, two.class_id) && v3_tuid_match(one.class_id, three.class_id));
    EXPECT_STREQ(one.category, "Audio Module Class");
    EXPECT_STREQ(two.sub_categories, "Fx|Dynamics|Mastering");
    EXPECT_EQ(readText(three.name), one.name);
    EXPECT_EQ(readText(three.version), two.version);
    EXPECT_NE(v3_cpp_obj(first)->get_class_info(first, 1, &one), V3_OK);

    std::string id;
    for (const std::uint8_t byte : two.class_id) id += fmt::format("{:02X}", byte);
    const std::string described =
        readBytes(std::string(Vst3Module::bundle()) + "/Contents/Resources/moduleinfo.json");
    for (const std::string& fact :
         {id, std::string(two.name), std::string(two.version), std::string(two.vendor),
          std::string(two.sdk_version), std::string(two.category)}) {
        EXPECT_NE(described.find('"' + fact + '"'), std::string::npos) << fact;
    }

    void* made = &one;
    EXPECT_NE(v3_cpp_obj(first)->create_instance(first, v3_component_iid, v3_component_iid, &made), V3_OK);
    EXPECT_EQ(made, nullptr) << "no such class";
    EXPECT_NE(v3_cpp_obj(first)->create_instance(first, two.class_id, v3_bstream_iid, &made), V3_OK);
    EXPECT_EQ(made, nullptr) << "not that kind of thing";
}

TEST_F(Vst3, EveryInterfaceLeadsToEveryOther) {
    const Vst3Module module;
    Vst3Instance plugin(module.factory());
    ASSERT_TRUE(plugin.component);
    const std::vector<const std::uint8_t*> ids = {v3_funknown_iid,
                                                  v3_plugin_base_iid,
                                                  v3_component_iid,
                                                  v3_audio_processor_iid,
                                                  v3_process_context_requirements_iid,
                                                  v3_edit_controller_iid,
                                                  v3_unit_information_iid,
                                                  v3_midi_mapping_iid};
    const auto query = [](void* object, const std::uint8_t* id) {
        void** found = nullptr;
        auto** const unknown = static_cast<v3_funknown**>(object);
        EXPECT_EQ(v3_cpp_obj_query_interface(unknown, id, &found), V3_OK);
        if (found) v3_cpp_obj_unref(reinterpret_cast<v3_funknown**>(found));
        return static_cast<void*>(found);
    };
    for (const std::uint8_t* from : ids) {
        void* const object = query(plugin.component, from);
        ASSERT_TRUE(object);
        for (const std::uint8_t* to : ids) EXPECT_EQ(query(object, to), query(plugin.component, to));
    }
    void** none = reinterpret_cast<void**>(&plugin);
    EXPECT_EQ(v3_cpp_obj_query_interface(plugin.component, v3_bstream_iid, &none), V3_NO_INTERFACE);
    EXPECT_EQ(none, nullptr);
    const std::uint32_t held = v3_cpp_obj_ref(plugin.component);
    EXPECT_EQ(v3_cpp_obj_ref(plugin.controller), held + 1) << "one object, one count";
    v3_cpp_obj_unref(plugin.component);
    EXPECT_EQ(v3_cpp_obj_unref(plugin.controller), held - 1);
}

TEST_F(Vst3, NothingOfTheHostIsHeldInTheEnd) {
    for (const auto loop :
         {Vst3Host::Loop::None, Vst3Host::Loop::Factory, Vst3Host::Loop::Context, Vst3Host::Loop::Handler}) {
        Vst3Host host(loop);
        ASSERT_TRUE(host.open(kStereoLayout, kRate, 512, false));
        EXPECT_EQ(host.runLoop.timers.size(), loop == Vst3Host::Loop::None ? 0u : 1u);
        EXPECT_NE(v3_cpp_obj_initialize(host.plugin().component, nullptr), V3_OK) << "twice";
        v3_cpp_obj_terminate(host.plugin().component);
        EXPECT_TRUE(host.runLoop.timers.empty());
        EXPECT_EQ(host.handler.references, 0);
        EXPECT_EQ(host.application.references, 0);
        EXPECT_EQ(host.runLoop.references, loop == Vst3Host::Loop::Factory ? 1 : 0) << "the factory's";
    }
}

TEST_F(Vst3, IsSetUpAndActivatedInAnyOrder) {
    Vst3Host host;
    ASSERT_TRUE(host.open(kStereoLayout, kRate, 512, false));
    Vst3Instance& plugin = host.plugin();
    EXPECT_EQ(plugin.setUp(kRate, 512), V3_FALSE) << "not while it is active";
    Audio audio(2, 512);
    v3_cpp_obj(plugin.processor)->set_processing(plugin.processor, 0);
    plugin.setActive(false);
    EXPECT_EQ(audio.process(host), V3_NOT_INITIALIZED);
    EXPECT_NE(plugin.setUp(kRate, 512, V3_REALTIME, V3_SAMPLE_64), V3_OK);
    for (const int step : {1, 1, 0, 0, 1, 2, 3, 2, 0, 2, 1, 3}) {
        if (step < 2) {
            EXPECT_EQ(plugin.setActive(step == 1), V3_OK);
        }
        if (step >= 2) v3_cpp_obj(plugin.processor)->set_processing(plugin.processor, step == 3);
    }
    EXPECT_EQ(audio.process(host), V3_OK) << "active, whoever says that it processes";
}

}  // namespace
}  // namespace vanta::test
