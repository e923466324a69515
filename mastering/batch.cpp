#include "mastering/batch.hpp"

#include <array>
#include <exception>
#include <memory>

#include "foundation/news_in_order.hpp"
#include "foundation/parallel.hpp"

namespace vanta {

namespace {

class Batch {
public:
    Batch(const MasteringJob& job, std::span<const Route> routes, BatchListener& listener)
        : job_(job), listener_(listener), outcomes_(routes.size()) {
        for (std::size_t i = 0; i < routes.size(); ++i) outcomes_[i].file.route = routes[i];
    }

    std::vector<RenderOutcome> run() {
        if (job_.takesAllTogether()) {
            std::vector<RenderOutcome*> all;
            for (RenderOutcome& outcome : outcomes_) all.push_back(&outcome);
            renderTogether(all);
        } else {
            inParallel(outcomes_.size(), job_.options.threads, [&](std::size_t i) {
                renderTogether({&outcomes_[i]});
                news_.end(i);
            });
        }
        return std::move(outcomes_);
    }

private:
    using Files = std::vector<std::unique_ptr<FileRender>>;

    /// In an album there is one task, which tells everything at once.
    std::size_t taskOf(const RenderOutcome& outcome) const {
        return job_.takesAllTogether() ? 0 : static_cast<std::size_t>(&outcome - outcomes_.data());
    }

    /// To be called while the failure is being handled.
    void fail(std::span<RenderOutcome* const> which, const Failure& failure) {
        for (RenderOutcome* outcome : which) outcome->error = failure.what();
        news_.add(taskOf(*which.front()), [this, caught = std::current_exception()] {
            try {
                std::rethrow_exception(caught);
            } catch (const Failure& told) {
                listener_.failed(told);
            }
        });
    }

    void renderTogether(std::vector<RenderOutcome*> which) {
        Files files = open(which);
        while (!files.empty() && !reach(which, files)) {
        }
        const auto album = albumLevel(files);
        for (std::size_t i = 0; i < files.size(); ++i) putInPlace(*which[i], *files[i], album);
    }

    /// Leaves only those in `which` that could be opened.
    Files open(std::vector<RenderOutcome*>& which) {
        Files files;
        std::erase_if(which, [&](RenderOutcome* outcome) {
            try {
                files.push_back(std::make_unique<FileRender>(outcome->file.route, job_));
                return false;
            } catch (const Failure& failure) {
                fail(std::array{outcome}, failure);
                return true;
            }
        });
        return files;
    }

    /// False if a file had to be left out: the rest has to begin anew.
    bool reach(std::vector<RenderOutcome*>& which, Files& files) {
        try {
            const GoalsReached reached = reachGoals(files, job_);
            for (RenderOutcome* outcome : which) outcome->reached = reached;
            return true;
        } catch (const FileFailure& failure) {
            const auto at = static_cast<std::ptrdiff_t>(failure.index);
            fail(std::array{which[failure.index]}, failure);
            which.erase(which.begin() + at);
            files.erase(files.begin() + at);
        } catch (const Failure& failure) {
            fail(which, failure);
            files.clear();
        }
        return false;
    }

    /// Of all files as one programme, if they are to tell it.
    std::optional<PlaybackLevel> albumLevel(const Files& files) const {
        if (job_.options.replayGain != RenderOptions::ReplayGain::Album) return std::nullopt;
        Programme all;
        for (const auto& file : files) all.merge(file->rendered().after->programme);
        return playbackLevel(all.figures());
    }

    void putInPlace(RenderOutcome& outcome, FileRender& render, const std::optional<PlaybackLevel>& album) {
        try {
            render.commit(album);
        } catch (const Failure& failure) {
            return fail(std::array{&outcome}, failure);
        }
        outcome.file = render.take();
        news_.add(taskOf(outcome), [&] { listener_.written(outcome); });
    }

    const MasteringJob& job_;
    BatchListener& listener_;
    std::vector<RenderOutcome> outcomes_;
    NewsInOrder news_{outcomes_.size()};
};

}  // namespace

std::vector<RenderOutcome> renderBatch(const MasteringJob& job, std::span<const Route> routes,
                                       BatchListener& listener) {
    return Batch(job, routes, listener).run();
}

}  // namespace vanta
