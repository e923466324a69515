#include "foundation/parallel.hpp"

#include <algorithm>
#include <atomic>
#include <exception>
#include <thread>
#include <vector>

namespace vanta {

void inParallel(std::size_t count, std::size_t threads, const std::function<void(std::size_t)>& act) {
    if (std::min(count, threads) <= 1) {
        for (std::size_t i = 0; i < count; ++i) act(i);
        return;
    }
    std::atomic<std::size_t> next{0};
    std::atomic<bool> failed{false};
    std::vector<std::exception_ptr> errors(count);
    const auto work = [&] {
        for (std::size_t i = next++; i < count && !failed; i = next++) {
            try {
                act(i);
            } catch (...) {
                errors[i] = std::current_exception();
                failed = true;
            }
        }
    };
    {
        std::vector<std::jthread> helpers;
        for (std::size_t i = 1; i < std::min(count, threads); ++i) helpers.emplace_back(work);
        work();
    }
    for (const std::exception_ptr& error : errors) {
        if (error) std::rethrow_exception(error);
    }
}

}  // namespace vanta
