#include <cstring>

#include "tests/host/aax/aax_fixture.hpp"

namespace vanta::test {
namespace {

constexpr AAX_CTypeID kValues = AAX_FourChars("elck");
constexpr AAX_CTypeID kName = AAX_FourChars("QMPr");

/// Odd values for all parameters, as no host's slider gives them.
void setOddValues(AaxSession& session) {
    Random random(17);
    for (int i = 0; i < session.count(); ++i) {
        const AbstractPluginParameter& parameter = session.model(i);
        const auto share = static_cast<float>(0.5 * (random.bipolar() + 1.0));
        session.model(i).setValue(parameter.denormalize(share), 0);
    }
    session.idle();
}

AAX_SPlugInChunk& chunkOf(std::vector<std::byte>& bytes) {
    return *reinterpret_cast<AAX_SPlugInChunk*>(bytes.data());
}

class AaxSessions : public AaxFixture {
protected:
    static AaxInstance::Chunks saved(AaxSession& session) {
        AaxInstance::Chunks chunks;
        EXPECT_EQ(session.host.save(chunks), AAX_SUCCESS);
        return chunks;
    }
    /// A chunk of values with what `change` makes of the list.
    static std::vector<std::byte> rewritten(const std::vector<std::byte>& values,
                                            const std::function<void(AAX_CChunkDataParser&)>& fill) {
        AAX_CChunkDataParser list;
        fill(list);
        std::vector<std::byte> bytes(AAX_kChunkHeaderSize + list.GetChunkDataSize());
        std::memcpy(bytes.data(), values.data(), AAX_kChunkHeaderSize);
        chunkOf(bytes).size = static_cast<std::int32_t>(bytes.size());
        list.GetChunkData(chunkOf(bytes).data());
        return bytes;
    }
    static bool equals(AaxSession& session, std::vector<std::byte>& chunk) {
        bool equal = false;
        EXPECT_EQ(session.host.parameters().CompareActiveChunk(&chunkOf(chunk), &equal), AAX_SUCCESS);
        return equal;
    }
};

TEST_F(AaxSessions, RestoreAnotherInstanceToTheLastBit) {
    for (const auto answers : {AaxInstance::Answers::AtOnce, AaxInstance::Answers::OnIdle}) {
        AaxSession first(component());
        setOddValues(first);
        first.plugin().setPresetName("Gone since then");
        auto chunks = saved(first);
        AaxSession second(component(), answers);
        // Nearly there already: an echo would not move it.
        second.model(0).setValue(first.model(0).value() + 0.0003f, 0);
        second.idle();
        EXPECT_FALSE(equals(second, chunks[kValues]));
        EXPECT_FALSE(equals(second, chunks[kName]));
        ASSERT_EQ(second.host.restore(chunks), AAX_SUCCESS);
        EXPECT_EQ(saved(second), chunks) << "at once, whenever the host answers";
        second.idle();
        for (int i = 0; i < first.count(); ++i) second.expectAgreement(i, first.model(i).value());
        EXPECT_TRUE(equals(second, chunks[kValues]));
        EXPECT_TRUE(equals(second, chunks[kName]));
        EXPECT_EQ(second.plugin().presetState().name(), "Gone since then");
        EXPECT_TRUE(second.plugin().presetState().values().path.empty());
        EXPECT_EQ(second.host.latency(), first.host.latency());
        EXPECT_EQ(second.host.value("MasterBypassID"), 0.0);
    }
}

TEST_F(AaxSessions, HaveTheFormThatHostsWereTold) {
    AaxSession session(component());
    AAX_IEffectParameters& host = session.host.parameters();
    std::int32_t count = 0;
    AAX_CTypeID id = 0;
    std::uint32_t size = 0;
    EXPECT_EQ(host.GetNumberOfChunks(&count), AAX_SUCCESS);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(host.GetChunkIDFromIndex(0, &id), AAX_SUCCESS);
    EXPECT_EQ(id, kValues);
    EXPECT_EQ(host.GetChunkIDFromIndex(1, &id), AAX_SUCCESS);
    EXPECT_EQ(id, kName);
    EXPECT_EQ(host.GetChunkIDFromIndex(2, &id), -20006);
    EXPECT_EQ(host.GetChunkIDFromIndex(-1, &id), -20006);
    EXPECT_EQ(host.GetChunkSize(AAX_FourChars("none"), &size), -20007);
    std::vector<std::byte> room(4096);
    EXPECT_EQ(host.GetChunk(kValues, &chunkOf(room)), -20008) << "nobody has asked for its size";
    EXPECT_EQ(host.GetChunk(AAX_FourChars("none"), &chunkOf(room)), -20007);
    EXPECT_EQ(host.SetChunk(AAX_FourChars("none"), &chunkOf(room)), -20007);
    chunkOf(room).chunkId = AAX_FourChars("none");
    EXPECT_TRUE(equals(session, room));

    session.plugin().setPresetName(std::string(70, 'x'));
    auto chunks = saved(session);
    AAX_SPlugInChunk& name = chunkOf(chunks[kName]);
    EXPECT_EQ(chunks[kName].size(), 122u);
    EXPECT_EQ(name.size, 122);
    EXPECT_STREQ(name.name, "Quillmark Preset Name");
    EXPECT_EQ(std::string(name.data(), 64), std::string(64, 'x'));
    EXPECT_EQ(name.data()[64], '\0');
    AAX_SPlugInChunk& values = chunkOf(chunks[kValues]);
    EXPECT_EQ(values.version, -1);
    EXPECT_EQ(values.size, static_cast<std::int32_t>(chunks[kValues].size()));
    EXPECT_STREQ(values.name, "Complete Controls State");
    AAX_CChunkDataParser list;
    ASSERT_TRUE(list.LoadChunk(values.data(), chunks[kValues].size() - AAX_kChunkHeaderSize));
    ASSERT_EQ(list.GetNumberOfValues(), 31u) << "without the Master Bypass";
    for (int i = 0; i < session.count(); ++i) {
        const AbstractPluginParameter& parameter = session.model(i);
        double number = -1.0;
        std::int32_t step = -1;
        if (parameter.kind() == AbstractPluginParameter::Kind::Float) {
            ASSERT_TRUE(list.FindDouble("", &number)) << parameter.name();
            EXPECT_EQ(number, static_cast<double>(parameter.value()));
        } else {
            ASSERT_TRUE(list.FindInt32("", &step)) << parameter.name();
            EXPECT_EQ(step, static_cast<int>(parameter.value() - parameter.minimum()));
        }
    }
}

TEST_F(AaxSessions, WhatIsMissingOrOfAnotherTypeStays) {
    AaxSession session(component());
    setOddValues(session);
    auto chunks = saved(session);
    const auto before = session.plugin().parameterValues();
    const auto restore = [&](const std::function<void(AAX_CChunkDataParser&)>& fill) {
        EXPECT_EQ(session.host.restore({{kValues, rewritten(chunks[kValues], fill)}}), AAX_SUCCESS);
        session.idle();
        return session.plugin().parameterValues();
    };
    // Gain, Style as a double, Lookahead not a number, Attack beyond its range, and no more.
    auto expected = before;
    expected[0] = 12.5f;
    expected[3] = session.model(3).maximum();
    EXPECT_EQ(restore([](AAX_CChunkDataParser& list) {
                  list.AddDouble("", 12.5);
                  list.AddDouble("", 3.0);
                  list.AddDouble("", std::nan(""));
                  list.AddDouble("", 1e9);
              }),
              expected);
    for (int i = 0; i < session.count(); ++i)
        session.expectAgreement(i, expected[static_cast<std::size_t>(i)]);
    EXPECT_EQ(restore([](AAX_CChunkDataParser&) {}), expected);
    EXPECT_EQ(restore([](AAX_CChunkDataParser& list) {
                  for (int i = 0; i < 40; ++i) list.AddInt32("another", i);
              }),
              expected);
    // Beyond its end the search does not begin anew.
    EXPECT_EQ(restore([](AAX_CChunkDataParser& list) { list.AddDouble("", 12.5); }), expected);
}

TEST_F(AaxSessions, ACutChunkIsRefusedWhole) {
    AaxSession session(component());
    auto chunks = saved(session);
    setOddValues(session);
    const auto before = session.plugin().parameterValues();
    for (const AAX_CTypeID id : {kValues, kName}) {
        for (std::size_t size = 0; size < chunks[id].size() - (id == kName ? 2 : 0); size += 3) {
            std::vector<std::byte> cut(chunks[id].begin(), chunks[id].begin() + static_cast<long>(size));
            cut.resize(std::max<std::size_t>(size, AAX_kChunkHeaderSize));
            chunkOf(cut).size = static_cast<std::int32_t>(size);
            EXPECT_EQ(session.host.parameters().SetChunk(id, &chunkOf(cut)), -20008) << size;
            EXPECT_FALSE(size >= AAX_kChunkHeaderSize && equals(session, cut));
        }
    }
    EXPECT_EQ(session.plugin().parameterValues(), before);
}

TEST_F(AaxSessions, HoldWhatAControllerHasJustMoved) {
    AaxSession session(component(), AaxInstance::Answers::OnIdle);
    session.plugin().statics().controllers.assign(20, 0);
    session.send({{0, 3, {0xB0, 20, 127, 0}}});
    session.playSilence();
    AaxSession other(component());
    ASSERT_EQ(other.host.restore(saved(session)), AAX_SUCCESS);
    EXPECT_EQ(other.model(0).value(), 30.0f);
}

}  // namespace
}  // namespace vanta::test
