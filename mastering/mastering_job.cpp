#include "mastering/mastering_job.hpp"

namespace vanta {

std::string MasteringJob::styleName() const {
    return options.patch ? options.patch->name : settings.style.text(settings.style.value());
}

}  // namespace vanta
