#pragma once

#include <optional>

#include "mastering/file_render.hpp"

namespace vanta {

/// How written files compare with a true-peak limit in dBTP, judged by measuring the file and not by what the
/// limiter meant to do. All of it needs `file.after`.

/// In dBTP; nothing for silence.
std::optional<double> writtenTruePeak(const RenderedFile& file);
/// By how many dB the file exceeds the limit: negative below it, minus infinity for silence.
double excessDb(const RenderedFile& file, double limitDb);
/// By how many dB the file stays below the limit, rounded down to thousandths so that it never promises more
/// than there is; nothing for silence.
std::optional<double> marginDb(const RenderedFile& file, double limitDb);

}  // namespace vanta
