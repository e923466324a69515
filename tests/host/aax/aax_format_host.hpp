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
    void idle() override { instance_->idle(); }
    void callBack() override { instance_->idle(); }
    void touch(int index, double position) override { instance_->setValue(std::to_string(index), position); }
    void process(const Block& block) override;

private:
    AaxModule module_;
    std::unique_ptr<AaxInstance> instance_;
    std::vector<std::size_t> hostChannel_;
    std::array<AAX_CMidiPacket, 64> midi_{};
};

}  // namespace vanta::test
