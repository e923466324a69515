#pragma once

#include <array>
#include <memory>
#include <vector>

#include "host/aax_host/aax_instance.hpp"
#include "host/aax_host/aax_module.hpp"
#include "tests/host/formats/format_host.hpp"

namespace vanta::test {

/// The host of AAX modules, on the built one.
class AaxFormatHost final : public FormatHost {
public:
    AaxFormatHost();
    static const char* path();

    const Traits& traits() const override;
    bool open(ChannelLayout layout, double sampleRate, int largestBlock, bool sideChain) override;
    bool reactivate(double sampleRate, int largestBlock) override;
    void setOffline(bool) override {}
    int parameterCount() const override;
    double value(int index) const override;
    void setValue(int index, double value) override;
    int latency() const override { return instance_->latency(); }
    std::vector<std::byte> save(int chunk) override;
    bool restore(std::span<const std::byte> bytes, int chunk) override;
    void idle() override;
    void callBack() override { instance_->idle(); }
    void touch(int index, double position) override { instance_->setValue(std::to_string(index), position); }
    void process(const Block& block) override;
    bool openWindow(unsigned long parent) override;
    void closeWindow() override;
    Size windowSize() const override;
    void dropWithWindow() override;
    std::vector<Edit> takeEdits() override;

private:
    /// The window around an editor.
    struct Container final : AAX_IViewContainer {
        explicit Container(AaxFormatHost& host) : owner(host) {}
        void* GetPtr() override { return reinterpret_cast<void*>(window); }
        AAX_Result GetModifiers(std::uint32_t* modifiers) override;
        AAX_Result SetViewSize(AAX_Point* size) override;
        AAX_Result HandleParameterMouseDown(AAX_CParamID, std::uint32_t) override { return -1; }
        AaxFormatHost& owner;
        unsigned long window = 0;
    };

    AaxModule module_;
    std::unique_ptr<AaxInstance> instance_;
    std::vector<std::size_t> hostChannel_;
    std::array<AAX_CMidiPacket, 64> midi_{};
    Container container_{*this};
    std::unique_ptr<AAX_IEffectGUI> editor_;
};

}  // namespace vanta::test
