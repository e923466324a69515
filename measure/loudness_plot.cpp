#include "measure/loudness_plot.hpp"

#include <cairo.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include "foundation/failure.hpp"
#include "foundation/numbers.hpp"

namespace vanta {

namespace {

constexpr int kWidth = 1200;
constexpr int kPanelHeight = 420;
constexpr int kMostPanels = 64;  ///< cairo's pictures end at 32767 points
constexpr double kLeft = 60.0;
constexpr double kRight = 20.0;
constexpr double kTop = 46.0;
constexpr double kBottom = 44.0;
constexpr double kHighest = 3.0;  // dB, LUFS
constexpr double kLowest = -60.0;

struct Colour {
    double red, green, blue;
};
constexpr Colour kPaper{1.0, 1.0, 1.0};
constexpr Colour kInk{0.15, 0.17, 0.20};
constexpr Colour kGrid{0.87, 0.88, 0.90};
constexpr Colour kPeaks{0.80, 0.82, 0.86};
constexpr Colour kPeaksText{0.50, 0.53, 0.58};
constexpr Colour kMomentary{0.45, 0.65, 0.85};
constexpr Colour kShortTerm{0.10, 0.35, 0.70};
constexpr Colour kTarget{0.85, 0.45, 0.10};
constexpr Colour kMissed{0.80, 0.10, 0.15};

struct DestroySurface {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
struct DestroyContext {
    void operator()(cairo_t* context) const { cairo_destroy(context); }
};

/// The panel of one file.
class Panel {
public:
    Panel(cairo_t* cairo, double top, const Measurement& measurement, const Requirements& requirements)
        : cairo_(cairo),
          top_(top + kTop),
          measurement_(measurement),
          requirements_(requirements),
          seconds_(std::max(measurement.figures.seconds, 0.1)) {}

    void draw() {
        drawPeaks();
        drawGrid();
        cairo_save(cairo_);
        cairo_rectangle(cairo_, kLeft, top_, width(), height());
        cairo_clip(cairo_);
        drawCurve(&TimelinePoint::momentary, kMomentary, 1.0);
        drawCurve(&TimelinePoint::shortTerm, kShortTerm, 2.0);
        cairo_restore(cairo_);
        if (requirements_.targetLufs) drawLimit(*requirements_.targetLufs);
        if (requirements_.maxTruePeakDb) drawLimit(*requirements_.maxTruePeakDb);
        drawTitle();
    }

private:
    static double width() { return kWidth - kLeft - kRight; }
    static double height() { return kPanelHeight - kTop - kBottom; }
    double x(double time) const { return kLeft + width() * std::clamp(time / seconds_, 0.0, 1.0); }
    double y(double level) const {
        return top_ + height() * (kHighest - std::clamp(level, kLowest, kHighest)) / (kHighest - kLowest);
    }
    void use(Colour colour) const { cairo_set_source_rgb(cairo_, colour.red, colour.green, colour.blue); }

    void line(double x1, double y1, double x2, double y2) const {
        cairo_move_to(cairo_, x1, y1);
        cairo_line_to(cairo_, x2, y2);
        cairo_stroke(cairo_);
    }

    /// `align`: 0 puts the text after the place, 1 before it, 0.5 around it.
    void write(double atX, double atY, const std::string& text, double align) const {
        cairo_text_extents_t extents;
        cairo_text_extents(cairo_, text.c_str(), &extents);
        cairo_move_to(cairo_, atX - align * extents.x_advance, atY);
        cairo_show_text(cairo_, text.c_str());
    }

    /// What exceeds the highest true peak stands out.
    void drawPeaks() const {
        cairo_set_antialias(cairo_, CAIRO_ANTIALIAS_NONE);
        const double limit = requirements_.maxTruePeakDb.value_or(kHighest);
        double from = 0.0;
        for (const TimelinePoint& point : measurement_.timeline) {
            const double level = dbFromGain(static_cast<double>(point.truePeak));
            use(kPeaks);
            bar(from, point.seconds, kLowest, std::min(level, limit));
            use(kMissed);
            if (level > limit) bar(from, point.seconds, limit, level);
            from = point.seconds;
        }
        cairo_set_antialias(cairo_, CAIRO_ANTIALIAS_DEFAULT);
    }

    void bar(double from, double to, double low, double high) const {
        cairo_rectangle(cairo_, x(from), y(high), std::max(x(to) - x(from), 0.5), y(low) - y(high));
        cairo_fill(cairo_);
    }

    void drawGrid() const {
        cairo_set_line_width(cairo_, 1.0);
        cairo_set_font_size(cairo_, 12.0);
        for (int level = 0; level >= static_cast<int>(kLowest); level -= 6) {
            use(kGrid);
            line(kLeft, y(level), kLeft + width(), y(level));
            use(kInk);
            write(kLeft - 8.0, y(level) + 4.0, fmt::format("{}", level), 1.0);
        }
        const double step = timeStep();
        for (double time = 0.0; time <= seconds_ + 1e-9; time += step) {
            use(kGrid);
            line(x(time), top_, x(time), top_ + height());
            use(kInk);
            write(x(time), top_ + height() + 18.0, timeText(time), 0.5);
        }
    }

    double timeStep() const {
        for (const double step : {0.1, 0.5, 1.0, 5.0, 10.0, 30.0, 60.0, 300.0, 600.0, 1800.0, 3600.0}) {
            if (seconds_ / step <= 14.0) return step;
        }
        return seconds_ / 14.0;
    }

    std::string timeText(double time) const {
        if (seconds_ < 14.0) return fmt::format("{:.1f} s", time);
        const long whole = std::lround(time);
        return fmt::format("{}:{:02}", whole / 60, whole % 60);
    }

    void drawCurve(float TimelinePoint::*scale, Colour colour, double lineWidth) const {
        use(colour);
        cairo_set_line_width(cairo_, lineWidth);
        bool drawing = false;
        for (const TimelinePoint& point : measurement_.timeline) {
            const auto level = static_cast<double>(point.*scale);
            if (level <= static_cast<double>(kNoLoudness)) {
                drawing = false;
                continue;
            }
            if (drawing)
                cairo_line_to(cairo_, x(point.seconds), y(level));
            else
                cairo_move_to(cairo_, x(point.seconds), y(level));
            drawing = true;
        }
        cairo_stroke(cairo_);
    }

    void drawLimit(double level) const {
        const double dashes[] = {6.0, 4.0};
        use(kTarget);
        cairo_set_line_width(cairo_, 1.5);
        cairo_set_dash(cairo_, dashes, 2, 0.0);
        line(kLeft, y(level), kLeft + width(), y(level));
        cairo_set_dash(cairo_, nullptr, 0, 0.0);
        write(kLeft + width() - 4.0, y(level) - 4.0, fmt::format("{:g}", level), 1.0);
    }

    void drawTitle() const {
        const ProgrammeFigures& figures = measurement_.figures;
        const auto text = [](std::optional<double> value, const char* unit) {
            return value ? fmt::format("{:.1f} {}", *value, unit) : std::string("-");
        };
        const auto& peak = figures.total.truePeak;
        use(requirements_.misses(figures) ? kMissed : kInk);
        cairo_set_font_size(cairo_, 15.0);
        write(
            kLeft, top_ - 14.0,
            fmt::format("{}   integrated {}   range {}   true peak {}", measurement_.file.filename().string(),
                        text(figures.integrated, "LUFS"), text(figures.range, "LU"),
                        text(peak ? std::optional(peak->level) : std::nullopt, "dBTP")),
            0.0);
        cairo_set_font_size(cairo_, 12.0);
        use(kShortTerm);
        write(kLeft + width() - 200.0, top_ - 14.0, "short-term", 1.0);
        use(kMomentary);
        write(kLeft + width() - 100.0, top_ - 14.0, "momentary", 1.0);
        use(kPeaksText);
        write(kLeft + width(), top_ - 14.0, "true peaks", 1.0);
    }

    cairo_t* cairo_;
    double top_;
    const Measurement& measurement_;
    const Requirements& requirements_;
    double seconds_;
};

void drawPanels(cairo_t* cairo, std::span<const Measurement> measurements, const Requirements& requirements) {
    cairo_select_font_face(cairo, "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_source_rgb(cairo, kPaper.red, kPaper.green, kPaper.blue);
    cairo_paint(cairo);
    double top = 0.0;
    for (const Measurement& measurement : measurements) {
        if (!measurement.error.empty()) continue;
        Panel(cairo, top, measurement, requirements).draw();
        top += kPanelHeight;
    }
}

}  // namespace

void writeLoudnessPlot(const std::filesystem::path& file, std::span<const Measurement> measurements,
                       const Requirements& requirements) {
    const auto panels = std::ranges::count_if(
        measurements, [](const Measurement& measurement) { return measurement.error.empty(); });
    if (panels > kMostPanels)
        throw Failure(fmt::format("{}: a plot shows at most {} files: measure fewer at a time", file.string(),
                                  kMostPanels));
    const std::unique_ptr<cairo_surface_t, DestroySurface> surface(cairo_image_surface_create(
        CAIRO_FORMAT_RGB24, kWidth, kPanelHeight * std::max(static_cast<int>(panels), 1)));
    const std::unique_ptr<cairo_t, DestroyContext> context(cairo_create(surface.get()));
    drawPanels(context.get(), measurements, requirements);
    const cairo_status_t status = cairo_surface_write_to_png(surface.get(), file.c_str());
    if (status != CAIRO_STATUS_SUCCESS) {
        throw Failure(
            fmt::format("{}: cannot be written: {}", file.string(), cairo_status_to_string(status)));
    }
}

}  // namespace vanta
