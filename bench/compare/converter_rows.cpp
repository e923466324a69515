#include <fmt/format.h>
#include <soxr.h>
#include <zita-resampler/resampler.h>

#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "bench/compare/music.hpp"
#include "bench/compare/rows.hpp"
#include "dsp/sr/converter_style.hpp"
#include "tests/support/signals.hpp"

namespace vanta::bench {

namespace {

constexpr int kBlock = 256;

/// Mono, up by a factor and down again: what each of its samples costs at the lower rate.
class Converting {
public:
    virtual ~Converting() = default;
    virtual void block() = 0;
};

class OwnConverters final : public Converting {
public:
    OwnConverters(int factor, const test::Signal& signal)
        : signal_(signal),
          style_(environment_, factor),
          up_(style_.createInterpolator()),
          down_(style_.createDecimator()),
          high_(kBlock * factor),
          out_(kBlock) {
        up_->update();
        down_->update();
    }
    void block() override {
        up_->convert(signal_.data(), high_.data(), kBlock);
        down_->convert(high_.data(), out_.data(), kBlock);
    }

private:
    const test::Signal& signal_;
    wave::Environment environment_{kBlock};
    sr::ConverterStyle style_;
    std::unique_ptr<sr::ConverterBase> up_, down_;
    wave::AlignedBuffer<float> high_, out_;
};

/// Half the filter's length in samples of the lower rate: its longest, for the band that ours keeps.
constexpr unsigned kZitaLength = 96;

class ZitaConverters final : public Converting {
public:
    ZitaConverters(int factor, const test::Signal& signal)
        : signal_(signal), high_(static_cast<std::size_t>(kBlock * factor)), out_(kBlock) {
        const auto low = static_cast<unsigned>(Music::kRate), high = low * static_cast<unsigned>(factor);
        up_.setup(low, high, 1, kZitaLength);
        down_.setup(high, low, 1, kZitaLength);
    }
    void block() override {
        convert(up_, signal_, high_);
        convert(down_, high_, out_);
    }

private:
    static void convert(Resampler& resampler, const std::vector<float>& in, std::vector<float>& out) {
        resampler.inp_count = static_cast<unsigned>(in.size());
        // It does not write to what it reads; its interface predates const.
        resampler.inp_data = const_cast<float*>(in.data());
        resampler.out_count = static_cast<unsigned>(out.size());
        resampler.out_data = out.data();
        resampler.process();
    }
    const test::Signal& signal_;
    Resampler up_, down_;
    std::vector<float> high_, out_;
};

class SoxrConverters final : public Converting {
public:
    SoxrConverters(int factor, const test::Signal& signal)
        : signal_(signal), high_(static_cast<std::size_t>(2 * kBlock * factor)), out_(2 * kBlock) {
        const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, 0);
        up_.reset(soxr_create(Music::kRate, Music::kRate * factor, 1, nullptr, nullptr, &quality, nullptr));
        down_.reset(soxr_create(Music::kRate * factor, Music::kRate, 1, nullptr, nullptr, &quality, nullptr));
    }
    void block() override {
        std::size_t raised = 0, lowered = 0;
        soxr_process(up_.get(), signal_.data(), kBlock, nullptr, high_.data(), high_.size(), &raised);
        soxr_process(down_.get(), high_.data(), raised, nullptr, out_.data(), out_.size(), &lowered);
    }

private:
    struct Delete {
        void operator()(soxr_t converter) const { soxr_delete(converter); }
    };
    const test::Signal& signal_;
    std::unique_ptr<std::remove_pointer_t<soxr_t>, Delete> up_, down_;
    std::vector<float> high_, out_;
};

}  // namespace

void addConverters(Report& report, const Target& target, const Options& options) {
    report.begin(target, "A channel raised in rate and lowered again", "ns a sample", "peer");
    const auto signal = test::pinkNoise(1, kBlock);
    for (const int factor : {2, 4, 8}) {
        OwnConverters own(factor, signal);
        ZitaConverters zita(factor, signal);
        SoxrConverters soxr(factor, signal);
        Race race({.passes = 20 * options.passes, .blocks = 128, .itemsPerBlock = kBlock});
        for (Converting* each : {static_cast<Converting*>(&own), static_cast<Converting*>(&zita),
                                 static_cast<Converting*>(&soxr)}) {
            race.enter("", repeat([each] { each->block(); }));
        }
        race.run();
        for (const auto& [peer, name] :
             {std::pair{1, "zita-resampler"}, std::pair{2, "soxr, high quality"}}) {
            const auto to = static_cast<std::size_t>(peer);
            report.add({fmt::format("{}x, beside {}", factor, name), race.nanoseconds(0),
                        race.nanoseconds(to), race.ratio(0, to)});
        }
    }
}

}  // namespace vanta::bench
