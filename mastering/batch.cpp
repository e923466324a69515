#include "mastering/batch.hpp"

#include <array>
#include <memory>

namespace vanta {

namespace {

class Batch {
public:
    Batch(const MasteringJob& job, std::span<const Route> routes, BatchListener& listener)
        : job_(job), listener_(listener), outcomes_(routes.size()) {
        for (std::size_t i = 0; i < routes.size(); ++i) outcomes_[i].file.route = routes[i];
    }

    std::vector<RenderOutcome> run() {
        std::vector<RenderOutcome*> all;
        for (RenderOutcome& outcome : outcomes_) all.push_back(&outcome);
        if (job_.goals.album) {
            renderTogether(all);
        } else {
            for (RenderOutcome* outcome : all) renderTogether({outcome});
        }
        return std::move(outcomes_);
    }

private:
    using Files = std::vector<std::unique_ptr<FileRender>>;

    void fail(std::span<RenderOutcome* const> which, const Failure& failure) {
        for (RenderOutcome* outcome : which) outcome->error = failure.what();
        listener_.failed(failure);
    }

    void renderTogether(std::vector<RenderOutcome*> which) {
        Files files = open(which);
        while (!files.empty() && !reach(which, files)) {
        }
        for (std::size_t i = 0; i < files.size(); ++i) putInPlace(*which[i], *files[i]);
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

    void putInPlace(RenderOutcome& outcome, FileRender& render) {
        try {
            render.commit();
        } catch (const Failure& failure) {
            return fail(std::array{&outcome}, failure);
        }
        outcome.file = render.take();
        listener_.written(outcome);
    }

    const MasteringJob& job_;
    BatchListener& listener_;
    std::vector<RenderOutcome> outcomes_;
};

}  // namespace

std::vector<RenderOutcome> renderBatch(const MasteringJob& job, std::span<const Route> routes,
                                       BatchListener& listener) {
    return Batch(job, routes, listener).run();
}

}  // namespace vanta
