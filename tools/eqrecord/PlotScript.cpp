// gnuplot does what a script tells it, down to running the system's shell, and file names and
// labels are anybody's text. So all text is written with everything but letters, digits and a few
// harmless marks as octal numbers: nothing is left of it that could end a string, or that gnuplot
// would put something in place of.
//
// Places, ranges and ticks are all given: gnuplot's own choice would not put the same pixels of all
// panels below each other, and fails for values that are huge or nearly the same.

#include "tools/eqrecord/PlotScript.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/eqrecord/JsonWriter.h"
#include "tools/eqrecord/PlotAxis.h"
#include "tools/eqrecord/PlotData.h"

namespace eqrecord {

namespace {

// Lengths are pixels of a canvas of this width.
constexpr double width = 1200;
constexpr double rightMargin = 18;
constexpr double topMargin = 84;
constexpr double bottomMargin = 46;
constexpr double panelHeight = 176;
constexpr double panelGap = 16;
/// Of a digit of the fonts that are usual, at their size in pixels.
constexpr double digitWidth = 0.64;
constexpr double fontSize = 12;
constexpr double tickFontSize = 10;

/// Columns that all detectors share.
constexpr std::size_t columnCount = 1200;
/// From this distance on pixels can be told apart, and get dots.
constexpr double dotDistance = 5;
constexpr int mostTicks = 5;
/// Labels of values have at least so much room, so that pictures hardly differ.
constexpr std::size_t leastLabel = 8;

// Colours that also those can tell apart who see no red or no green.
constexpr std::array<std::string_view, 2> detectorColours{"#0072b2", "#3a4a54"};
constexpr std::string_view missingColour = "#f3e6ef";
constexpr std::string_view missingMarkColour = "#cc79a7";
constexpr std::string_view strikingColour = "#d55e00";

/// A string of gnuplot's.
std::string quoted(std::string_view text) {
    constexpr std::string_view harmless =
        "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz .,:-_()/+";
    constexpr std::string_view digits = "0123456789";
    std::string result = "\"";
    bool isOctal = false;
    for (const char c : text) {
        // A digit behind an octal number could be read as a fourth one of it.
        isOctal = harmless.find(c) == std::string_view::npos ||
                  (isOctal && digits.find(c) != std::string_view::npos);
        if (!isOctal) {
            result += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        result += '\\';
        for (const int digit : {byte >> 6, byte >> 3 & 7, byte & 7}) {
            result += static_cast<char>('0' + digit);
        }
    }
    return result + '"';
}

/// Fonts are scaled so that a size is in pixels of the canvas: what isn't SVG takes points.
std::string terminalOf(std::string_view format, double height) {
    const std::string font =
        " noenhanced font \"sans-serif," + decimalOf(fontSize) + "\" background \"#ffffff\"";
    if (format == "png") {
        return "pngcairo size " + decimalOf(width * 1.5) + ',' + decimalOf(height * 1.5) +
               " fontscale 1.125 linewidth 1.5 pointscale 1.5" + font;
    }
    if (format == "pdf") {
        return "pdfcairo size 30cm," + decimalOf(30 * height / width) +
               "cm fontscale 0.56 linewidth 0.7 pointscale 0.7" + font;
    }
    return "svg size " + decimalOf(width) + ',' + decimalOf(height) + " dynamic" + font;
}

/// A block of data, and what is drawn of it.
struct Plot {
    const char* block;
    std::string_view lines;
    std::vector<std::string> how;
};

/// Those that have data, the last one in front. `pixel` is a pixel of the canvas as a part of the
/// pixel axis.
std::vector<Plot> plotsOf(const PlotData& data, double pixel) {
    const auto colour = [](std::string_view rgb) {
        return " linecolor rgb \"" + std::string(rgb) + '"';
    };
    const std::string wider = decimalOf(std::round(pixel * 600) / 1000);
    const std::string box = " axes x1y2 with boxxyerror fillstyle solid noborder";
    const std::string line = "1:(y($2)) with lines linewidth 1";
    const std::string dot = "1:(y($2)) with points pointtype 7 pointsize 0.35";
    const std::string mark = " with points pointsize 0.8" + colour(strikingColour) + " pointtype ";
    std::vector<Plot> plots{
        {"missing",
         data.missing,
         {"(0):(0):1:2:(0):(1)" + box + colour(missingColour),
          // Wide enough to be seen also of a single one.
          "(0):(0):($1-" + wider + "):($2+" + wider + "):(0):(0.03)" + box +
              colour(missingMarkColour)}},
        {"line1", data.lines[0], {line + colour(detectorColours[0])}},
        {"line2", data.lines[1], {line + colour(detectorColours[1])}},
        {"dots1", data.dots[0], {dot + colour(detectorColours[0])}},
        {"dots2", data.dots[1], {dot + colour(detectorColours[1])}},
        {"low", data.infinite[0], {"1:(0.05) axes x1y2" + mark + "11"}},
        {"high", data.infinite[1], {"1:(0.95) axes x1y2" + mark + "9"}},
        {"outliers", data.outliers, {"1:(y($2))" + mark + '6'}},
    };
    std::erase_if(plots, [](const Plot& plot) { return plot.lines.empty(); });
    return plots;
}

/// One page, whose places all follow from it.
class Page {
  public:
    Page(std::ostream& out, const PlotPage& page, double height);
    void write();

  private:
    /// Labels and values.
    using TickList = std::vector<std::pair<std::string, std::string>>;

    double slotWidth() const {
        return (width - leftMargin_ - rightMargin) / static_cast<double>(page_.detectors.size());
    }
    /// Lengths as parts of the canvas, which gnuplot counts from its lower left corner.
    static std::string across(double x) { return part(x / width); }
    std::string up(double y) const { return part(1 - y / height_); }
    static std::string part(double of) { return decimalOf(std::round(of * 1e5) / 1e5); }
    static double topOf(std::size_t panel) {
        return topMargin + static_cast<double>(panel) * (panelHeight + panelGap);
    }
    /// What is drawn at the left end of a detector, on the axis.
    double startOf(std::size_t detector) const {
        return static_cast<double>(detector * page_.pixels + page_.firstPixel) - 0.5;
    }
    bool hasDots() const;

    void writeLabel(std::string_view text, double x, double y, std::string_view how);
    void writeTitles();
    void writeLegend();
    void writeDetectors();
    void writePixelTicks();
    void writePanel(std::size_t index);
    void writeScale(std::size_t index);
    void writeTicks(std::string_view tics, const TickList& list, double size);
    void writePlots(const PlotData& data);

    std::ostream& out_;
    const PlotPage& page_;
    double height_;
    double leftMargin_ = 0;
    PlotAxes axes_;
};

Page::Page(std::ostream& out, const PlotPage& page, double height)
    : out_(out), page_(page), height_(height), axes_(page, mostTicks) {
    const std::size_t characters = std::max(axes_.longestLabel, leastLabel);
    leftMargin_ = 40 + digitWidth * fontSize * static_cast<double>(characters);
}

bool Page::hasDots() const {
    return slotWidth() >= dotDistance * static_cast<double>(page_.pixels);
}

void Page::writeLabel(std::string_view text, double x, double y, std::string_view how) {
    out_ << "set label " << quoted(text) << " at screen " << across(x) << ", screen " << up(y)
         << " noenhanced " << how << '\n';
}

void Page::writeTitles() {
    writeLabel(page_.title, 20, 24, "font \",15\"");
    writeLabel(page_.subtitle, 20, 46, "textcolor rgb \"#505050\"");
    writeLabel("pixel", (leftMargin_ + width - rightMargin) / 2, height_ - 12, "center");
}

/// What the marks mean that there are on the page, and how many.
void Page::writeLegend() {
    std::size_t missing = 0;
    std::size_t infinite = 0;
    std::size_t outliers = 0;
    for (const PlotPanel& panel : page_.panels) {
        missing += panel.missing();
        infinite += panel.infinite;
        outliers += panel.outliers.size();
    }
    double x = width - rightMargin;
    const auto add = [&](std::size_t count, const std::string& name, int point,
                         std::string_view colour) {
        const std::string text = name + ": " + std::to_string(count);
        x -= 30 + digitWidth * fontSize * static_cast<double>(text.size());
        writeLabel(text, x, 46,
                   "offset 1.2,-0.2 point pointtype " + std::to_string(point) +
                       " pointsize 1 linecolor rgb \"" + std::string(colour) + '"');
    };
    if (missing > 0) {
        add(missing, "no value", 5, missingMarkColour);
    }
    if (infinite > 0) {
        add(infinite, "infinite", 9, strikingColour);
    }
    if (outliers > 0) {
        add(outliers, "outlier", 6, strikingColour);
    }
}

/// Their numbers, above the first panel, and what their borders are drawn of.
void Page::writeDetectors() {
    const bool isWide = slotWidth() > 88;
    if (!isWide) {
        writeLabel("detector", leftMargin_ - 8, topMargin - 12, "right");
    }
    out_ << "$borders << END\n";
    for (std::size_t i = 0; i <= page_.detectors.size(); ++i) {
        const std::string x = decimalOf(startOf(i));
        out_ << x << " 0\n" << x << " 1\n\n";
    }
    out_ << "END\n";
    for (std::size_t i = 0; i < page_.detectors.size(); ++i) {
        const std::string number = std::to_string(page_.detectors[i]);
        writeLabel(isWide ? "detector " + number : number,
                   leftMargin_ + (static_cast<double>(i) + 0.5) * slotWidth(), topMargin - 12,
                   "center");
    }
}

/// Below the last panel only; the others have the same pixels.
void Page::writePixelTicks() {
    const std::size_t digits = std::to_string(page_.firstPixel + page_.pixels - 1).size();
    const double room = 8 + digitWidth * tickFontSize * static_cast<double>(digits);
    const PixelTicks ticks = pixelTicksOf(page_, slotWidth() / room);
    TickList list;
    for (std::size_t i = 0; i < page_.detectors.size(); ++i) {
        for (std::size_t j = 0; j < ticks.count; ++j) {
            const std::size_t pixel = ticks.first + j * ticks.step;
            list.emplace_back(std::to_string(pixel), std::to_string(i * page_.pixels + pixel));
        }
    }
    writeTicks("xtics", list, tickFontSize);
}

/// The axis of values: as it is, or, of values that gnuplot can't be trusted with, from 0 to 1.
void Page::writeScale(std::size_t index) {
    const std::optional<PlotAxis>& axis = axes_.axes[index];
    if (!axis || axis->isPlain()) {
        const double low = axis ? axis->scaledLow() : 0;
        const double high = axis ? axis->scaledHigh() : 1;
        out_ << "y(value) = value\nset yrange [" << decimalOf(low) << ':' << decimalOf(high)
             << "]\n";
    } else {
        out_ << "y(value) = (value * 2.0 ** " << -axis->exponent() << " - ("
             << decimalOf(axis->scaledLow()) << ")) / "
             << decimalOf(axis->scaledHigh() - axis->scaledLow()) << "\nset yrange [0:1]\n";
    }
    TickList list;
    for (const PlotAxis::Tick& tick : axis ? axis->ticks() : std::vector<PlotAxis::Tick>()) {
        list.emplace_back(tick.label, axis->isPlain() ? tick.label : decimalOf(tick.position));
    }
    writeTicks("ytics", list, fontSize);
}

void Page::writeTicks(std::string_view tics, const TickList& list, double size) {
    out_ << "unset " << tics << '\n';  // without a list gnuplot would choose
    std::string text;
    for (const auto& [label, value] : list) {
        text += (text.empty() ? "" : ", ") + quoted(label) + ' ' + value;
    }
    if (!list.empty()) {
        out_ << "set " << tics << " (" << text << ") nomirror scale 0.5 font \"," << decimalOf(size)
             << "\" textcolor rgb \"#202020\"\n";
    }
}

void Page::writePlots(const PlotData& data) {
    const std::vector<Plot> plots = plotsOf(data, static_cast<double>(page_.pixels) / slotWidth());
    for (const Plot& plot : plots) {
        out_ << '$' << plot.block << " << END\n" << plot.lines << "END\n";
    }
    out_ << "plot $borders using 1:2 axes x1y2 with lines linewidth 0.7 linecolor rgb "
            "\"#a0a0a0\" notitle";
    for (const Plot& plot : plots) {
        for (const std::string& how : plot.how) {
            out_ << ", \\\n     $" << plot.block << " using " << how << " notitle";
        }
    }
    out_ << '\n';
}

/// Labels hold for one plot; the page's own are drawn with the first panel.
void Page::writePanel(std::size_t index) {
    const PlotPanel& panel = page_.panels[index];
    const double top = topOf(index);
    out_ << "\n# " << panel.name << "\nset tmargin at screen " << up(top)
         << "\nset bmargin at screen " << up(top + panelHeight) << '\n';
    writeLabel(panel.name, 20, top + panelHeight / 2, "center rotate");
    if (panel.finite == 0) {
        writeLabel(panel.emptiness(), (leftMargin_ + width - rightMargin) / 2,
                   top + panelHeight / 2, "center front");
    }
    if (index + 1 == page_.panels.size()) {
        writePixelTicks();
    }
    writeScale(index);
    writePlots(plotDataOf(page_, panel, columnCount, hasDots()));
    out_ << "unset label\n";
}

void Page::write() {
    out_ << "\nreset\nset multiplot\n"
            "set lmargin at screen "
         << across(leftMargin_)
         << "\n"
            "set rmargin at screen "
         << across(width - rightMargin)
         << "\n"
            "set border linecolor rgb \"#606060\"\n"
            "set grid ytics linetype 1 linecolor rgb \"#e8e8e8\" linewidth 0.7\n"
            "set y2range [0:1]\nunset xtics\n";
    const double end = page_.pixels > 0 ? startOf(page_.detectors.size()) : startOf(0) + 1;
    out_ << "set xrange [" << decimalOf(startOf(0)) << ':' << decimalOf(end) << "]\n";
    writeTitles();
    writeLegend();
    writeDetectors();
    for (std::size_t i = 0; i < page_.panels.size(); ++i) {
        writePanel(i);
    }
    out_ << "unset multiplot\n";
}

}  // namespace

PlotScript::PlotScript(std::ostream& out, std::string_view format, std::size_t panels)
    : out_(out),
      height_(topMargin + static_cast<double>(panels) * (panelHeight + panelGap) - panelGap +
              bottomMargin) {
    out_ << "# A plot made by eqrecord, for gnuplot 5.2 or later, which writes the picture to its\n"
            "# standard output: gnuplot -d FILE > PICTURE. What it is drawn on and with:\n"
            "set terminal "
         << terminalOf(format, height_) << "\nset encoding utf8\n";
}

void PlotScript::addPage(const PlotPage& page) {
    Page(out_, page, height_).write();
}

}  // namespace eqrecord
