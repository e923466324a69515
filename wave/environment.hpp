#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "foundation/notify_event.hpp"
#include "foundation/realtime.hpp"

namespace vanta::wave {

class Producer;
class SubEnvironment;
template <typename T>
class BasicBlock;

/// Hears when the largest block of its environment changes.
class DynamicMaxBlockSizeListener {
public:
    virtual ~DynamicMaxBlockSizeListener() = default;
    virtual void maxBlockSizeChanged() = 0;
};

/// Some of the gates of a graph, a bit for each.
using GateSet = std::uint64_t;
inline constexpr int kMostGates = 64;

enum class ResetMode {
    ResetActive,        ///< nodes that are active and not kept through resets, here and in all children
    ResetAll,           ///< every node, here and in all children
    MarkDiscontinuity,  ///< no node: ramps end at their next read
    ResetActiveLocal    ///< those of ResetActive, here only
};

/// What the nodes of one block graph share: the tick, the running position, the sample rate, the largest
/// block and the lists of nodes that run or reset by themselves. One audio thread uses it.
class Environment {
public:
    /// Flags of `run` and of the producers that it calls.
    static constexpr int kPositionOnly = 1;  ///< `run`: nothing is computed, the position moves
    static constexpr int kBackRun = 1;       ///< a back-group node that nobody has pulled
    static constexpr int kFrontRun = 2;      ///< a front-group node, run in any case

    static constexpr int kFrontGroup = 0;
    static constexpr int kBackGroup = 1;

    explicit Environment(int maxBlock);
    virtual ~Environment();
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

    /// The largest number of samples that a block of this environment holds now.
    virtual int maxBlockSize() const { return blockLimit_; }
    virtual void addBlockListener(DynamicMaxBlockSizeListener*) {}
    virtual void removeBlockListener(DynamicMaxBlockSizeListener*) {}

    /// One sub-block, after the outputs have been pulled: gives the nodes of the process list their turn,
    /// advances the position, then runs the children.
    VANTA_REALTIME void run(int samples, int flags);
    /// Opens a new sub-block: every node computes again at its next pull.
    VANTA_REALTIME void advanceTick();
    VANTA_REALTIME void resetGraph(ResetMode mode);
    /// Prepares every node of this environment for what has changed around it. A reset follows. May allocate.
    void prepareNodes();
    /// Hz. A real change prepares and resets every node and raises `sampleRateChanged`. May allocate.
    void setSampleRate(float rate);

    void schedule(Producer* node, int group);
    void unschedule(Producer* node);
    void addResettable(Producer* node);
    void removeResettable(Producer* node);

    /// Before a whole graph is torn down: nodes then skip the search in the lists.
    void setDestroying();
    bool destroying() const { return destroying_; }
    // Rest: what a node need not compute again, see Producer.

    /// Something outside of the signal has changed, a value, a connection, what is pulled: every node
    /// computes again in the next sub-block. Between blocks, or within one for the sake of the next.
    VANTA_REALTIME void noteChange() { root_->changed_ = true; }
    /// Counts the stretches between changes.
    std::uint32_t epoch() const { return epoch_; }
    /// Whether a node that was at rest in `epoch` has rested up to now: in the present stretch, or in the one
    /// before, which has ended here.
    bool restedSince(std::uint32_t epoch) const {
        return epoch == epoch_ || (epoch + 1 == epoch_ && epochStart_ == position_);
    }
    /// Tells the node that computes now whether something that it reads stands still, and as long as which
    /// gates are closed.
    VANTA_REALTIME void noteRead(bool atRest, GateSet gates = 0) {
        root_->reads_.rest = root_->reads_.rest && atRest;
        root_->reads_.gates |= gates;
    }
    /// What a computation has read.
    struct Reads {
        bool rest = true;   ///< all of it stands still
        GateSet gates = 0;  ///< as long as these are closed

        /// Until somebody notes a change.
        bool restForGood() const { return rest && gates == 0; }
    };
    template <typename Compute>
    VANTA_REALTIME Reads readsOf(Compute&& compute) {
        const Reads before = std::exchange(root_->reads_, Reads{});
        compute();
        return std::exchange(root_->reads_, before);
    }

    // Gates, see Producer.

    /// The set of nothing but this gate; of nothing if there are too many already.
    GateSet addGate(Producer* gate);
    void removeGate(GateSet gate);
    /// Computes those gates for this tick, for a reader of `samples`.
    VANTA_REALTIME void checkGates(GateSet gates, int samples) {
        if ((gates & ~root_->checkedGates_) != 0) root_->checkAnew(gates, samples / wholeFactor());
    }
    VANTA_REALTIME void noteOpening(GateSet gate);
    /// How often gates have opened so far.
    std::uint64_t openings() const { return root_->openings_; }
    /// Whether none of them has opened since `openings`.
    bool stayedClosed(GateSet gates, std::uint64_t openings) const {
        return gates == 0 || openings == root_->openings_ || root_->lastOpening(gates) <= openings;
    }
    /// Whether none has before this tick.
    bool stayedClosedUntilNow(GateSet gates, std::uint64_t openings) const;

    void setMeteringActive(bool active);
    bool meteringActive() const { return meteringActive_; }

    /// The length of the host's blocks, by which a reader judges whether audio has stopped. Any thread.
    int hostBlockSamples() const { return hostBlockSamples_.load(std::memory_order_relaxed); }
    void setHostBlockSamples(int samples) {
        hostBlockSamples_.store(samples, std::memory_order_relaxed);
        expectHostBlocks(samples);
    }
    /// The longest of the host's blocks so far, or that it has announced. Any thread.
    int longestHostBlock() const { return longestHostBlock_.load(std::memory_order_relaxed); }
    VANTA_REALTIME void expectHostBlocks(int samples);

    float sampleRate() const { return sampleRate_; }
    int blockLimit() const { return blockLimit_; }
    std::uint32_t tick() const { return tick_; }
    /// Samples processed so far.
    std::int64_t position() const { return position_; }
    /// The position at the last reset proper, and at the last jump of any kind.
    std::int64_t resetPosition() const { return resetPosition_; }
    std::int64_t discontinuityPosition() const { return discontinuityPosition_; }
    /// All zero, never written.
    BasicBlock<float>& silentBlock() { return *silentBlock_; }

    NotifyEvent sampleRateChanged;

protected:
    Environment(int blockLimit, int silentSamples);

private:
    friend class Producer;
    friend class SubEnvironment;

    /// Beyond 0, which stands for never, and its successor.
    static constexpr std::uint32_t kFirstEpoch = 2;

    virtual int rateFactor() const { return 1; }
    /// The rate in multiples of the root's.
    virtual int wholeFactor() const { return 1; }
    VANTA_REALTIME void checkAnew(GateSet gates, int rootSamples);
    std::uint64_t lastOpening(GateSet gates) const;
    void runProcessList(int samples);
    void beginTick(std::uint32_t epoch);
    void registerNode();

    std::vector<Producer*> processList_;
    std::vector<Producer*> resetList_;
    std::vector<SubEnvironment*> children_;
    int blockLimit_;
    int producerCount_ = 0;
    int frontCount_ = 0;
    std::int64_t position_ = 0;
    std::int64_t discontinuityPosition_ = 0;
    std::int64_t resetPosition_ = 0;
    float sampleRate_ = 44100.0f;
    std::uint32_t tick_ = 0;
    std::uint32_t epoch_ = kFirstEpoch;
    std::int64_t epochStart_ = 0;  ///< the position at which it began
    Environment* root_ = this;     ///< the top one, which keeps what follows for all
    std::uint32_t latestEpoch_ = kFirstEpoch;
    bool changed_ = false;  ///< since the last sub-block began
    Reads reads_;           ///< of the computing node so far
    struct Gate {
        Producer* node = nullptr;
        std::uint64_t opening = 0;      ///< the number of its last opening
        std::uint32_t openingTick = 0;  ///< and the root's tick then
    };
    std::array<Gate, kMostGates> gates_;
    GateSet checkedGates_ = 0;  ///< in this tick
    std::uint64_t openings_ = 0;
    bool destroying_ = false;
    bool meteringActive_ = false;
    std::atomic<int> hostBlockSamples_{0};
    std::atomic<int> longestHostBlock_{0};
    std::unique_ptr<BasicBlock<float>> silentBlock_;
};

/// A child environment at an integer multiple of its parent's rate.
class SubEnvironment final : public Environment {
public:
    static constexpr int kMaxFactor = 32;

    explicit SubEnvironment(Environment& parent);
    ~SubEnvironment() override;

    int maxBlockSize() const override { return parent_.blockLimit() * factor_; }
    void addBlockListener(DynamicMaxBlockSizeListener* listener) override;
    void removeBlockListener(DynamicMaxBlockSizeListener* listener) override;

    int factor() const { return factor_; }
    /// 1 to 32. A change resizes all blocks, prepares the nodes here and in the parent, and resets this
    /// environment and the active nodes of the parent. Allocates.
    void setFactor(int factor);
    Environment& parent() const { return parent_; }

private:
    int rateFactor() const override { return factor_; }
    int wholeFactor() const override { return factor_ * parent_.wholeFactor(); }

    Environment& parent_;
    std::vector<DynamicMaxBlockSizeListener*> blockListeners_;
    int factor_ = 1;
};

}  // namespace vanta::wave
