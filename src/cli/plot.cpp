#include "cli/plot.hpp"

#include "support/numbers.hpp"
#include "support/text.hpp"

#include <plplot.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

namespace wavex::cli {
namespace {

constexpr PLINT kWidth = 1200, kHeight = 800;
constexpr size_t kColumns = 1200;      // resolution of the reduction of long curves
constexpr size_t kLegendRows = 12;     // legend entries shown; further curves are counted
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Colour map 0: background, ink, grid, then the curves' colours (a palette that stays apart for
// readers with colour-vision deficiencies and in grey print).
struct Rgb {
    PLINT r, g, b;
};
constexpr Rgb kColours[] = {
    {255, 255, 255}, {0, 0, 0},      {225, 225, 225},                                    // background, ink, grid
    {31, 119, 180},  {255, 127, 14}, {44, 160, 44},  {214, 39, 40},  {148, 103, 189},  // curves
    {140, 86, 75},   {227, 119, 194}, {127, 127, 127}, {188, 189, 34}, {23, 190, 207},
};
enum : PLINT { kBackground = 0, kInk = 1, kGrid = 2, kFirstCurve = 3 };
constexpr PLINT kCurveColours = static_cast<PLINT>(std::size(kColours)) - kFirstCurve;

struct Device {
    std::string_view extension;
    const char* name;
};
constexpr Device kDevices[] = {{".png", "pngcairo"}, {".svg", "svgcairo"}, {".pdf", "pdfcairo"}};

const Device* deviceFor(std::string_view path) {
    for (const Device& d : kDevices)
        if (path.size() > d.extension.size() && iequals(path.substr(path.size() - d.extension.size()), d.extension))
            return &d;
    return nullptr;
}

// Text for PLplot, whose escape character is '#'.
std::string plText(std::string_view text) {
    std::string out;
    for (char c : text) {
        out += c;
        if (c == '#') out += '#';
    }
    return out;
}

// One curve: a division of one value.
struct Series {
    const double* x;
    const double* real;  // the y values, or
    const Complex* cplx; // their complex values, drawn as magnitudes
    size_t n;
    std::string legend;
    PLINT colour;

    double xAt(size_t i) const { return x[i]; }
    double yAt(size_t i) const { return real ? real[i] : std::abs(cplx[i]); }
};

struct Axis {
    bool log = false;
    double lo = 0, hi = 0;  // in plot coordinates (log10 of the values on a logarithmic axis)

    // Plot coordinate of a value; NaN where the axis cannot show it.
    double map(double v) const {
        if (log) return v > 0 && std::isfinite(v) ? std::log10(v) : kNaN;
        return std::isfinite(v) ? v : kNaN;
    }
};

struct Range {
    double lo = std::numeric_limits<double>::infinity(), hi = -std::numeric_limits<double>::infinity();
    void add(double v) {
        if (!std::isfinite(v)) return;
        lo = std::min(lo, v);
        hi = std::max(hi, v);
    }
    bool empty() const { return lo > hi; }
};

// Widens a range of plot coordinates a little (`margin` of its span), or to something visible
// when it is a single value.
void pad(Axis* a, double margin) {
    double span = a->hi - a->lo;
    double d = span > 0 ? span * margin : (a->lo == 0 ? 1 : std::fabs(a->lo) * 0.1);
    if (span > 0 && margin == 0) return;
    a->lo -= d;
    a->hi += d;
}

// Tick labels in engineering notation as people write it on a plot: µ for micro, M for mega.
struct TickFormat {
    Axis x, y;
};
void tickLabel(PLINT axis, PLFLT value, char* out, PLINT length, PLPointer data) {
    const TickFormat* f = static_cast<const TickFormat*>(data);
    const Axis& a = axis == PL_X_AXIS ? f->x : f->y;
    double v = a.log ? std::pow(10.0, value) : value;
    if (!a.log && std::fabs(v) < 1e-9 * (a.hi - a.lo)) v = 0;  // a tick at zero computed as 1e-17
    std::string text = formatEngineering(v, 4);
    if (text.size() >= 3 && text.compare(text.size() - 3, 3, "Meg") == 0) text.replace(text.size() - 3, 3, "M");
    else if (!text.empty() && text.back() == 'u') text.replace(text.size() - 1, 1, "µ");
    std::snprintf(out, static_cast<size_t>(length), "%s", text.c_str());
}

// Values near where PLplot puts the major ticks of an axis (multiples of 1, 2 or 5 times a power
// of ten; decades on a logarithmic axis), to size the margin for their labels.
std::vector<double> tickValues(const Axis& a) {
    std::vector<double> ticks;
    double step = 1;
    if (!a.log) {
        const double raw = (a.hi - a.lo) / 5, magnitude = std::pow(10.0, std::floor(std::log10(raw)));
        step = magnitude * (raw < 2 * magnitude ? 1 : raw < 5 * magnitude ? 2 : 5);
    }
    for (double k = std::ceil(a.lo / step); k <= std::floor(a.hi / step) && ticks.size() < 50; ++k)
        ticks.push_back(k * step);
    return ticks;
}

// The points of a series to draw, as polylines in plot coordinates: broken where the axes cannot
// show a point, and reduced, where the curve has far more points than the plot has columns, to
// the first, lowest, highest and last point of each column.
template <class Draw>
void polylines(const Series& s, const Axis& ax, const Axis& ay, Draw draw) {
    std::vector<double> px, py;
    auto flush = [&] {
        if (!px.empty()) draw(px, py);
        px.clear();
        py.clear();
    };
    bool monotone = true;
    for (size_t i = 1; i < s.n && monotone; ++i) monotone = !(s.x[i] < s.x[i - 1]);
    if (!monotone || s.n <= 4 * kColumns) {
        for (size_t i = 0; i < s.n; ++i) {
            double x = ax.map(s.xAt(i)), y = ay.map(s.yAt(i));
            if (std::isnan(x) || std::isnan(y)) {
                flush();
                continue;
            }
            px.push_back(x);
            py.push_back(y);
        }
        flush();
        return;
    }
    const double scale = kColumns / (ax.hi - ax.lo);
    size_t column = SIZE_MAX, first = 0, last = 0, low = 0, high = 0;
    double lowY = 0, highY = 0;
    auto emit = [&] {
        if (column == SIZE_MAX) return;
        std::array<size_t, 4> keep{first, low, high, last};
        std::sort(keep.begin(), keep.end());
        for (size_t k = 0; k < keep.size(); ++k) {
            if (k > 0 && keep[k] == keep[k - 1]) continue;
            px.push_back(ax.map(s.xAt(keep[k])));
            py.push_back(ay.map(s.yAt(keep[k])));
        }
        column = SIZE_MAX;
    };
    for (size_t i = 0; i < s.n; ++i) {
        double x = ax.map(s.xAt(i)), y = ay.map(s.yAt(i));
        if (std::isnan(x) || std::isnan(y)) {
            emit();
            flush();
            continue;
        }
        size_t c = static_cast<size_t>(std::clamp((x - ax.lo) * scale, 0.0, double(kColumns)));
        if (c != column) {
            emit();
            column = c;
            first = low = high = i;
            lowY = highY = y;
        }
        last = i;
        if (y < lowY) lowY = y, low = i;
        if (y > highY) highY = y, high = i;
    }
    emit();
    flush();
}

// How much of the curves would lie under a legend box (boxW by boxH, in fractions of the plot) in
// each corner: top right, top left, bottom right, bottom left. The curves are traced through a
// coarse grid, so a line between two distant points counts as much as a dense curve.
std::array<size_t, 4> crowding(const std::vector<Series>& series, const Axis& ax, const Axis& ay, double boxW, double boxH) {
    constexpr int kCells = 48;
    std::vector<bool> used(kCells * kCells);
    auto cell = [](double f) { return std::clamp(static_cast<int>(f * kCells), 0, kCells - 1); };
    for (const Series& s : series) {
        const size_t step = std::max<size_t>(1, s.n / 4000);
        double px = kNaN, py = kNaN;
        for (size_t i = 0; i < s.n; i += step) {
            double x = (ax.map(s.xAt(i)) - ax.lo) / (ax.hi - ax.lo), y = (ay.map(s.yAt(i)) - ay.lo) / (ay.hi - ay.lo);
            if (std::isnan(x) || std::isnan(y)) {
                px = py = kNaN;
                continue;
            }
            if (std::isnan(px)) px = x, py = y;
            const int steps = 1 + 2 * std::max(std::abs(cell(x) - cell(px)), std::abs(cell(y) - cell(py)));
            for (int k = 0; k <= steps; ++k) {
                double t = static_cast<double>(k) / steps;
                used[static_cast<size_t>(cell(py + t * (y - py)) * kCells + cell(px + t * (x - px)))] = true;
            }
            px = x, py = y;
        }
    }
    std::array<size_t, 4> crowd{};
    const int w = cell(boxW) + 1, h = cell(boxH) + 1;
    for (int r = 0; r < kCells; ++r)
        for (int c = 0; c < kCells; ++c) {
            if (!used[static_cast<size_t>(r * kCells + c)]) continue;
            const bool right = c >= kCells - w, left = c < w, top = r >= kCells - h, bottom = r < h;
            crowd[0] += right && top;
            crowd[1] += left && top;
            crowd[2] += right && bottom;
            crowd[3] += left && bottom;
        }
    return crowd;
}

std::string unitSuffix(PhysType p) {
    std::string_view symbol = units::symbol(p);
    return symbol.empty() ? "" : " (" + std::string(symbol) + ")";
}

std::string quantity(PhysType p) {
    if (p == units::Number || p == units::Unknown || p == units::NoRef) return "value";
    return std::string(units::description(p));
}

bool driverInstalled(const char* name) {
    int count = 200;
    std::vector<const char*> menu(static_cast<size_t>(count)), names(static_cast<size_t>(count));
    const char** m = menu.data();
    const char** d = names.data();
    plgDevs(&m, &d, &count);
    for (int i = 0; i < count; ++i)
        if (d[i] && std::strcmp(d[i], name) == 0) return true;
    return false;
}

// PLplot ends the process on a fatal error; this says so in our words first.
int plplotFailed(const char* message) {
    std::fflush(stdout);
    std::fprintf(stderr, "error: the plot could not be drawn: %s\n", message);
    return 1;
}

// What one plot shows: its curves, their axes and titles.
struct Figure {
    std::vector<Series> series;
    PhysType xPhys = units::Unknown;
    std::string xTitle, yTitle, title;
    bool allComplex = true;
    Axis ax, ay;
};

// The curves of the values (each division its own), with the titles; the reason when the values
// do not share their kind of x-axis.
template <class Entries>
std::string collectCurves(const Entries& values, Figure* f) {
    const Vector& first = *values.front().value;
    f->xPhys = first.ref.phys;
    f->xTitle = (first.ref.name.empty() ? quantity(f->xPhys) : first.ref.name) + unitSuffix(f->xPhys);
    std::vector<std::string> yTitles;
    for (const auto& e : values) {
        const Vector& v = *e.value;
        if (v.ref.phys != f->xPhys)
            return "'" + values.front().label + "' is drawn over " + std::string(units::description(f->xPhys)) +
                   " but '" + e.label + "' over " + std::string(units::description(v.ref.phys)) +
                   ": draw them on separate plots";
        f->allComplex = f->allComplex && v.type == VD_COMPLEX;
        std::string yTitle = (v.type == VD_COMPLEX ? std::string("magnitude") : quantity(v.phys)) + unitSuffix(v.phys);
        if (std::find(yTitles.begin(), yTitles.end(), yTitle) == yTitles.end()) yTitles.push_back(yTitle);
        for (size_t k = 0; k < v.numDivisions(); ++k) {
            const size_t start = v.divisionStart(k);
            Series s{};
            s.x = v.ref.real() + start;
            s.real = v.type == VD_REAL ? v.real.data() + start : nullptr;
            s.cplx = v.type == VD_COMPLEX ? v.cplx.data() + start : nullptr;
            s.n = v.divisionLength(k);
            std::string division = v.label(k).value_or("division " + std::to_string(k + 1));
            if (values.size() == 1) s.legend = division;
            else if (v.numDivisions() == 1 && !v.label(0)) s.legend = e.label;
            else s.legend = e.label + ": " + division;
            s.colour = kFirstCurve + static_cast<PLINT>(f->series.size() % kCurveColours);
            f->series.push_back(std::move(s));
        }
    }
    for (const auto& e : values) f->title += (f->title.empty() ? "" : ", ") + e.label;
    if (f->title.size() > 100) f->title = f->title.substr(0, 97) + "...";
    for (const std::string& t : yTitles) f->yTitle += (f->yTitle.empty() ? "" : ", ") + t;
    return "";
}

// Scales: logarithmic x for a frequency sweep over more than two decades, logarithmic y for
// magnitudes over more than two decades, unless the options say otherwise; the ranges padded.
// The reason when nothing can be drawn.
std::string scaleAxes(const PlotOptions& options, Figure* f) {
    Range xs, ys;
    for (const Series& s : f->series)
        for (size_t i = 0; i < s.n; ++i) {
            xs.add(s.xAt(i));
            ys.add(s.yAt(i));
        }
    if (xs.empty() || ys.empty()) return "nothing to plot: the values are not finite numbers";
    Axis &ax = f->ax, &ay = f->ay;
    ax.log = options.logX || (f->xPhys == units::Frequency && xs.lo > 0 && xs.hi > 100 * xs.lo);
    ay.log = !options.linY && f->allComplex && ys.lo > 0 && ys.hi > 100 * ys.lo;
    Range px, py;
    for (const Series& s : f->series)
        for (size_t i = 0; i < s.n; ++i) {
            double x = ax.map(s.xAt(i)), y = ay.map(s.yAt(i));
            if (std::isnan(x) || std::isnan(y)) continue;
            px.add(x);
            py.add(y);
        }
    if (px.empty()) return "nothing to plot: no point is positive, as a logarithmic x-axis needs";
    ax.lo = px.lo, ax.hi = px.hi;
    ay.lo = py.lo, ay.hi = py.hi;
    pad(&ax, 0);
    pad(&ay, 0.05);
    return "";
}

// Where things go on the page, in PLplot's page units.
struct Layout {
    double ch = 0;                  // character height
    double pageW = 0, pageH = 0;
    double left = 0, bottom = 0, viewW = 0, viewH = 0;
    double yLabelAt = 0;            // y-axis title, in character heights from the frame
    std::vector<std::string> legendTexts;  // one a row; none for a single curve
    PLINT legendPosition = 0;
};

// Margins in character heights; the left one takes the longest y tick label, at about 0.9 of a
// character height per character (digits and SI prefixes are wide). The legend, when there are
// several curves, goes in a corner of the plot that no curve passes through, else beside the plot
// on the right. PLplot draws its text at 0.9 of the character height, two heights a row, each
// character up to 0.72 of a height wide, after a line sample and margins of about 4.5 heights.
Layout lay(const Figure& f, TickFormat& format) {
    Layout l;
    PLFLT pageX0, pageX1, pageY0, pageY1, defaultHeight, ch;
    plgspa(&pageX0, &pageX1, &pageY0, &pageY1);
    plgchr(&defaultHeight, &ch);
    l.ch = ch;
    l.pageW = pageX1 - pageX0;
    l.pageH = pageY1 - pageY0;
    size_t yChars = 0;
    for (double y : tickValues(f.ay)) {
        char label[64];
        tickLabel(PL_Y_AXIS, y, label, sizeof label, &format);
        yChars = std::max(yChars, std::string_view(label).size());
    }
    l.yLabelAt = 2.0 + 0.9 * static_cast<double>(yChars);
    l.left = (l.yLabelAt + 1.0) * ch;
    l.bottom = 4.5 * ch;
    l.viewW = l.pageW - l.left - 3.0 * ch;
    l.viewH = l.pageH - l.bottom - 3.5 * ch;

    const std::vector<Series>& series = f.series;
    const size_t rows = series.size() > 1 ? std::min(series.size(), kLegendRows + 1) : 0;
    for (size_t i = 0; i < rows; ++i)
        l.legendTexts.push_back(i == kLegendRows ? "... and " + std::to_string(series.size() - kLegendRows) + " more"
                                                 : plText(series[i].legend));
    if (rows == 0) return l;
    size_t widest = 0;
    for (const std::string& t : l.legendTexts) widest = std::max(widest, t.size());
    const double legendW = (4.5 + 0.72 * static_cast<double>(widest)) * ch, legendH = 2.0 * static_cast<double>(rows) * ch;
    const double gapW = 0.015, gapH = 0.02;  // between legend and frame, of the plot's size
    std::array<size_t, 4> crowd = crowding(series, f.ax, f.ay, gapW + legendW / l.viewW, gapH + legendH / l.viewH);
    const size_t corner = static_cast<size_t>(std::min_element(crowd.begin(), crowd.end()) - crowd.begin());
    if (crowd[corner] == 0) {
        l.legendPosition = PL_POSITION_INSIDE | (corner < 2 ? PL_POSITION_TOP : PL_POSITION_BOTTOM) |
                           (corner % 2 == 0 ? PL_POSITION_RIGHT : PL_POSITION_LEFT);
    } else {
        l.legendPosition = PL_POSITION_SUBPAGE | PL_POSITION_INSIDE | PL_POSITION_RIGHT | PL_POSITION_TOP;
        l.viewW -= legendW;
    }
    return l;
}

// Grid, frame, tick labels and titles.
void drawFrame(const Figure& f, const Layout& l, TickFormat& format) {
    plslabelfunc(tickLabel, &format);
    const std::string xLog = f.ax.log ? "l" : "", yLog = f.ay.log ? "l" : "";
    plcol0(kGrid);
    plwidth(1);
    const std::string xGrid = f.ax.log ? "gh" + xLog : "g", yGrid = f.ay.log ? "gh" + yLog : "g";  // minor lines on decades
    plbox(xGrid.c_str(), 0, 0, yGrid.c_str(), 0, 0);
    plcol0(kInk);
    plbox(("bcnsto" + xLog).c_str(), 0, 0, ("bcnstvo" + yLog).c_str(), 0, 0);
    plmtex("b", 3.2, 0.5, 0.5, plText(f.xTitle).c_str());
    plmtex("l", l.yLabelAt, 0.5, 0.5, plText(f.yTitle).c_str());
    plmtex("t", 1.5, 0.5, 0.5, plText(f.title).c_str());
}

void drawLegend(const Figure& f, const Layout& l) {
    const size_t rows = l.legendTexts.size();
    if (rows == 0) return;
    std::vector<PLINT> opts, textColours, lineColours, lineStyles;
    std::vector<PLFLT> lineWidths;
    std::vector<const char*> textPtrs;
    for (size_t i = 0; i < rows; ++i) {
        const bool more = i == kLegendRows;
        opts.push_back(more ? PL_LEGEND_NONE : PL_LEGEND_LINE);
        textColours.push_back(kInk);
        lineColours.push_back(more ? kBackground : f.series[i].colour);
        lineStyles.push_back(1);
        lineWidths.push_back(2);
        textPtrs.push_back(l.legendTexts[i].c_str());
    }
    // Beside the plot, its top level with the plot's frame.
    const bool beside = l.legendPosition & PL_POSITION_SUBPAGE;
    const double ch = l.ch;
    PLFLT width, height;
    pllegend(&width, &height, PL_LEGEND_BACKGROUND | PL_LEGEND_BOUNDING_BOX, l.legendPosition,
             beside ? 0.5 * ch / l.pageW : 0.015, beside ? 3.5 * ch / l.pageH : 0.02, 2.0 * ch / l.viewW, kBackground,
             kInk, 1, 0, 0, static_cast<PLINT>(rows), opts.data(), 0.6, 0.9, 2.0, 0.0, textColours.data(),
             textPtrs.data(), nullptr, nullptr, nullptr, nullptr, lineColours.data(), lineStyles.data(),
             lineWidths.data(), nullptr, nullptr, nullptr, nullptr);
}

}  // namespace

// In sanitizer builds: the libraries behind PLplot's cairo driver keep what they load (the fonts
// fontconfig found, the driver libltdl opened) for the life of the process. Leak checking leaves
// those to their owners.
#if defined(__SANITIZE_ADDRESS__)
#define WAVEX_LEAK_CHECKED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define WAVEX_LEAK_CHECKED 1
#endif
#endif
#ifdef WAVEX_LEAK_CHECKED
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig.so\nleak:libltdl.so\nleak:libcairo.so\nleak:libpango\nleak:libglib\n";
}
extern "C" const char* __lsan_default_options() { return "print_suppressions=0"; }
#endif

bool plottable(const VectorPtr& value) {
    if (!value || (value->type != VD_REAL && value->type != VD_COMPLEX) || value->ref.type != VD_REAL) return false;
    for (size_t k = 0; k < value->numDivisions(); ++k)
        if (value->divisionLength(k) > 1) return true;
    return false;
}

std::string checkPlotPath(std::string_view path) {
    if (deviceFor(path)) return "";
    return "the plot file '" + std::string(path) + "' must end in .png, .svg or .pdf";
}

void Plot::add(VectorPtr value, std::string label) { values_.push_back({std::move(value), std::move(label)}); }

std::string Plot::write(const std::string& path, const PlotOptions& options) const {
    const Device* device = deviceFor(path);
    if (!device) return checkPlotPath(path);
    if (values_.empty()) return "nothing to plot: no statement gave a curve of more than one point";
    Figure figure;
    if (std::string why = collectCurves(values_, &figure); !why.empty()) return why;
    if (std::string why = scaleAxes(options, &figure); !why.empty()) return why;

    // PLplot would end the process on a file it cannot open, or ask on standard input for a
    // driver it lacks: check both first.
    if (FILE* f = std::fopen(path.c_str(), "wb")) std::fclose(f);
    else return "cannot write the plot '" + path + "': " + std::strerror(errno);
    if (!driverInstalled(device->name))
        return std::string("PLplot's ") + device->name + " driver is not installed (Debian package plplot-driver-cairo)";

    TickFormat format{figure.ax, figure.ay};
    plsexit(plplotFailed);
    plsdev(device->name);
    plsfnam(path.c_str());
    plspage(0, 0, kWidth, kHeight, 0, 0);
    std::vector<PLINT> r, g, b;
    for (const Rgb& c : kColours) r.push_back(c.r), g.push_back(c.g), b.push_back(c.b);
    plscmap0(r.data(), g.data(), b.data(), static_cast<PLINT>(r.size()));
    plinit();
    pladv(0);
    const Layout layout = lay(figure, format);
    plsvpa(layout.left, layout.left + layout.viewW, layout.bottom, layout.bottom + layout.viewH);
    plwind(figure.ax.lo, figure.ax.hi, figure.ay.lo, figure.ay.hi);
    drawFrame(figure, layout, format);
    plwidth(1.5);
    for (const Series& s : figure.series) {
        plcol0(s.colour);
        polylines(s, figure.ax, figure.ay, [](const std::vector<double>& x, const std::vector<double>& y) {
            if (x.size() == 1) plpoin(1, x.data(), y.data(), 1);  // a lone point between gaps
            else plline(static_cast<PLINT>(x.size()), x.data(), y.data());
        });
    }
    drawLegend(figure, layout);
    plend();
    return "";
}

}  // namespace wavex::cli
