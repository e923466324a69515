#include "plugin/model/shared_statics.hpp"

namespace vanta {
namespace {

struct Process {
    std::recursive_mutex section;
    int instances = 0;
    std::unique_ptr<PluginStatics> statics;
};

Process& process() {
    static Process theProcess;
    return theProcess;
}

PluginStatics& join(const SharedStatics::Make& make) {
    const auto held = SharedStatics::constructionLock();
    if (process().instances == 0) process().statics = make();
    ++process().instances;
    return *process().statics;
}

}  // namespace

SharedStatics::SharedStatics(const Make& make) : statics_(join(make)) {}

SharedStatics::~SharedStatics() {
    const auto held = constructionLock();
    if (--process().instances == 0) process().statics.reset();
}

std::unique_lock<std::recursive_mutex> SharedStatics::constructionLock() {
    return std::unique_lock(process().section);
}

int SharedStatics::instanceCount() {
    const auto held = constructionLock();
    return process().instances;
}

}  // namespace vanta
