#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "host/common/hosted_plugin.hpp"
#include "host/common/pending_edits.hpp"
#include "host/lv2/lv2_control.hpp"
#include "host/lv2/lv2_instance.hpp"

namespace vanta {

/// How long a host may take to move a port to where it was asked to.
inline constexpr std::chrono::milliseconds kPortPatience{500};

/// What an interface shows and how it keeps in step with it. On the interface's thread.
class Lv2InterfaceLink {
public:
    using Clock = std::chrono::steady_clock;

    virtual ~Lv2InterfaceLink() = default;
    virtual HostedPlugin& plugin() = 0;
    virtual const Lv2Control& control(int index) const = 0;
    /// What the host is to be told.
    virtual PendingEdits& edits() = 0;
    /// Whether there still is a port to tell it to.
    virtual bool isConnected() const { return true; }
    /// The host is about to be told of a value, as it is shown.
    virtual void valueTold(int index, float shown, Clock::time_point now) = 0;
    /// The host says that a port has a value.
    virtual void portSays(int /*index*/, float /*shown*/, Clock::time_point /*now*/) {}
    /// A part of a message came from the plug-in.
    virtual void receive(std::span<const std::byte> /*part*/) {}
    virtual void idle(Clock::time_point now) = 0;
};

/// In the process of the plug-in: the interface shows the very instance.
class Lv2SameInstance final : public Lv2InterfaceLink {
public:
    explicit Lv2SameInstance(std::shared_ptr<Lv2Instance> shown);
    ~Lv2SameInstance() override;

    HostedPlugin& plugin() override { return instance_->plugin(); }
    const Lv2Control& control(int index) const override;
    PendingEdits& edits() override { return instance_->interfaceEdits(); }
    bool isConnected() const override { return !instance_->isOver(); }
    void valueTold(int index, float shown, Clock::time_point now) override;
    void idle(Clock::time_point now) override;

private:
    std::shared_ptr<Lv2Instance> instance_;
    std::vector<std::optional<Clock::time_point>> awaitedUntil_;  ///< for each port
};

}  // namespace vanta
