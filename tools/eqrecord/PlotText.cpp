// A character shows eight dots, two side by side and four on top of each other, and is one of the
// 256 braille patterns. A column of dots goes from the least to the greatest value of its pixels;
// a pixel that has several columns to itself is a dash. Lines from one pixel to the next would fill
// the few dots that there are, and hide that something is missing between them.
//
// A cell shows dots or a mark, never both, and a mark is what people look for: it wins.

#include "tools/eqrecord/PlotText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string>
#include <string_view>
#include <vector>

#include "tools/eqrecord/JsonWriter.h"
#include "tools/eqrecord/PlotAxis.h"

namespace eqrecord {

namespace {

constexpr std::size_t dotsAcross = 2;
constexpr std::size_t dotsUp = 4;
constexpr std::size_t rowCount = 8;  ///< of a panel
constexpr int mostTicks = 4;
/// Labels of values have at least so much room, so that panels and pictures hardly differ.
constexpr std::size_t leastLabel = 7;

/// A braille pattern in UTF-8. The lowest dots came last to the code.
std::string braille(unsigned int dots) {
    return {'\xE2', static_cast<char>(0xA0 | dots >> 6), static_cast<char>(0x80 | (dots & 0x3F))};
}

/// The bit of a dot by its column and its row, from above.
constexpr std::array<std::array<unsigned int, dotsUp>, dotsAcross> brailleBits{
    {{0x01, 0x02, 0x04, 0x40}, {0x08, 0x10, 0x20, 0x80}}};

/// What the detectors' values look like; rows count from above.
class Canvas {
  public:
    Canvas(std::size_t slots, std::size_t slotWidth)
        : slots_(slots), slotWidth_(slotWidth), cells_(rowCount * slots * slotWidth) {}

    /// A vertical line of dots, both ends from 0 to 1.
    void addStroke(std::size_t slot, std::size_t dotColumn, double low, double high) {
        for (std::size_t row = dotRow(high); row <= dotRow(low); ++row) {
            cell(slot, dotColumn, row / dotsUp).dots |=
                brailleBits[dotColumn % dotsAcross][row % dotsUp];
        }
    }
    /// A character in place of dots.
    void addMark(std::size_t slot, std::size_t dotColumn, double position, const char* mark) {
        cell(slot, dotColumn, rowOf(position)).mark = mark;
    }
    std::string row(std::size_t number) const;
    /// The row of a place from 0 to 1.
    static std::size_t rowOf(double position) { return dotRow(position) / dotsUp; }

  private:
    struct Cell {
        unsigned int dots = 0;
        const char* mark = nullptr;  ///< in UTF-8; null for none
    };

    /// 0 itself would be one row too low.
    static std::size_t dotRow(double position) {
        constexpr std::size_t count = rowCount * dotsUp;
        return std::min(count - 1, static_cast<std::size_t>((1 - position) * count));
    }
    Cell& cell(std::size_t slot, std::size_t dotColumn, std::size_t row) {
        return cells_[(row * slots_ + slot) * slotWidth_ + dotColumn / dotsAcross];
    }

    std::size_t slots_;        ///< detectors
    std::size_t slotWidth_;    ///< cells of each
    std::vector<Cell> cells_;  ///< row after row
};

std::string Canvas::row(std::size_t number) const {
    std::string text;
    for (std::size_t i = 0; i < slots_ * slotWidth_; ++i) {
        const Cell& cell = cells_[number * slots_ * slotWidth_ + i];
        text += i > 0 && i % slotWidth_ == 0 ? "┊" : "";
        if (cell.mark != nullptr) {
            text += cell.mark;
        } else {
            text += cell.dots == 0 ? " " : braille(cell.dots);
        }
    }
    return text;
}

/// With six digits, which is more than a picture shows.
std::string shortDecimalOf(double value) {
    std::array<char, 32> text{};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::general, 6);
    return {text.data(), end.ptr};
}

/// From the least to the greatest value, with as many digits as it takes to tell them apart.
std::string rangeOf(const PlotPanel& panel) {
    std::string least = shortDecimalOf(panel.least);
    const std::string greatest = shortDecimalOf(panel.greatest);
    if (panel.least == panel.greatest) {
        return least;
    }
    return least != greatest ? least + " to " + greatest
                             : decimalOf(panel.least) + " to " + decimalOf(panel.greatest);
}

/// A page, whose panels are all laid out alike.
class TextPage {
  public:
    TextPage(const PlotPage& page, std::size_t width, std::ostream& out);
    void write();

  private:
    struct Text {
        std::size_t middle = 0;  ///< where it is to stand
        std::string text;
    };

    /// Where the middle of an index among a detector's pixels is: a column of dots.
    std::size_t dotColumnOf(std::size_t index) const {
        return (2 * index + 1) * slotWidth_ * dotsAcross / (2 * page_.pixels);
    }
    /// Where a character of a detector stands in its line.
    std::size_t placeOf(std::size_t detector, std::size_t cell) const {
        return labelWidth_ + 2 + detector * (slotWidth_ + 1) + cell;
    }
    /// The kind and what the picture may be too small to show: the range, and how many values are
    /// something special.
    static std::string headingOf(const PlotPanel& panel);
    Canvas drawn(const PlotPanel& panel, const PlotAxis& axis) const;
    /// Without blanks at the end.
    void writeLine(const std::string& text);
    /// Texts from left to right; one that comes too close to the one before it is moved.
    void writeTexts(const std::vector<Text>& texts);
    void writeDetectors();
    void writePixels();
    void writePanel(const PlotPanel& panel, const PlotAxis& axis);

    const PlotPage& page_;
    std::ostream& out_;
    PlotAxes axes_;
    std::size_t labelWidth_;     ///< of the labels of values
    std::size_t slotWidth_ = 1;  ///< of a detector, in characters
};

TextPage::TextPage(const PlotPage& page, std::size_t width, std::ostream& out)
    : page_(page),
      out_(out),
      axes_(page, mostTicks),
      labelWidth_(std::max(axes_.longestLabel, leastLabel)) {
    const std::size_t slots = page_.detectors.size();
    const std::size_t others = labelWidth_ + 2 + (slots - 1);  // label, axis, borders
    slotWidth_ = width > others + slots ? (width - others) / slots : 1;
}

void TextPage::writeLine(const std::string& text) {
    out_ << text.substr(0, text.find_last_not_of(' ') + 1) << '\n';
}

void TextPage::writeTexts(const std::vector<Text>& texts) {
    std::string line;
    for (const Text& text : texts) {
        const std::size_t half = text.text.size() / 2;
        line.resize(std::max(line.size(), text.middle - std::min(text.middle, half)), ' ');
        line += text.text;
    }
    writeLine(line);
}

void TextPage::writeDetectors() {
    std::vector<Text> texts;
    for (std::size_t i = 0; i < page_.detectors.size(); ++i) {
        const std::string number = std::to_string(page_.detectors[i]);
        texts.push_back(
            {placeOf(i, slotWidth_ / 2), slotWidth_ < 12 ? number : "detector " + number});
    }
    writeTexts(texts);
}

void TextPage::writePixels() {
    const std::string last = std::to_string(page_.firstPixel + page_.pixels - 1);
    // Two blanks between any two of them.
    const PixelTicks ticks =
        pixelTicksOf(page_, static_cast<double>(slotWidth_) / static_cast<double>(last.size() + 2));
    std::vector<Text> texts;
    for (std::size_t i = 0; i < page_.detectors.size(); ++i) {
        for (std::size_t j = 0; j < ticks.count; ++j) {
            const std::size_t pixel = ticks.first + j * ticks.step;
            texts.push_back({placeOf(i, dotColumnOf(pixel - page_.firstPixel) / dotsAcross),
                             std::to_string(pixel)});
        }
    }
    if (!texts.empty()) {
        writeTexts(texts);
    }
    const std::string first = std::to_string(page_.firstPixel);
    out_ << (first == last ? "pixel " + first : "pixels " + first + " to " + last)
         << " of each detector\n";
}

std::string TextPage::headingOf(const PlotPanel& panel) {
    std::string text = std::string(panel.name) + ": ";
    text += panel.finite == 0 ? panel.emptiness() : rangeOf(panel);
    const auto add = [&](std::size_t count, const char* what) {
        text += count > 0 ? ", " + std::string(what) + ": " + std::to_string(count) : "";
    };
    add(panel.finite > 0 ? panel.missing() : 0, "no value");
    add(panel.infinite, "infinite");
    add(panel.outliers.size(), "outlier (o)");
    return text;
}

Canvas TextPage::drawn(const PlotPanel& panel, const PlotAxis& axis) const {
    Canvas canvas(page_.detectors.size(), slotWidth_);
    const std::size_t across = slotWidth_ * dotsAcross;
    for (std::size_t i = 0; i < page_.detectors.size(); ++i) {
        const auto values = page_.valuesOf(panel, i);
        const auto columns = columnsOf(values, across);
        // Fewer pixels than dots: each has several.
        for (std::size_t dot = 0; dot < across; ++dot) {
            const PlotColumn& column = columns[dot * columns.size() / across];
            if (column.hasFinite) {
                canvas.addStroke(i, dot, axis.position(values[column.least]),
                                 axis.position(values[column.greatest]));
            }
            if (column.hasInfinite[0]) {
                canvas.addMark(i, dot, 0, "▼");
            }
            if (column.hasInfinite[1]) {
                canvas.addMark(i, dot, 1, "▲");
            }
        }
    }
    for (const std::size_t outlier : panel.outliers) {
        if (std::isfinite(panel.values[outlier])) {
            canvas.addMark(outlier / page_.pixels, dotColumnOf(outlier % page_.pixels),
                           axis.position(panel.values[outlier]), "o");
        }
    }
    return canvas;
}

void TextPage::writePanel(const PlotPanel& panel, const PlotAxis& axis) {
    const Canvas canvas = drawn(panel, axis);
    for (std::size_t row = 0; row < rowCount; ++row) {
        std::string label;
        for (const PlotAxis::Tick& tick : axis.ticks()) {
            // Of two ticks in a row the upper one.
            label = Canvas::rowOf(tick.position) == row ? tick.label : label;
        }
        writeLine(std::string(labelWidth_ - label.size(), ' ') + label +
                  (label.empty() ? " │" : " ┤") + canvas.row(row));
    }
}

void TextPage::write() {
    out_ << page_.title << '\n' << page_.subtitle << "\n\n";
    if (page_.pixels == 0) {
        out_ << "no pixels\n";
        return;
    }
    writeDetectors();
    for (std::size_t i = 0; i < page_.panels.size(); ++i) {
        out_ << (i > 0 ? "\n" : "") << headingOf(page_.panels[i]) << '\n';
        if (axes_.axes[i]) {
            writePanel(page_.panels[i], *axes_.axes[i]);
        }
    }
    writePixels();
}

}  // namespace

void writePlotText(const PlotPage& page, std::size_t width, std::ostream& out) {
    TextPage(page, width, out).write();
}

}  // namespace eqrecord
