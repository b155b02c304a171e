// A parameter file as people write them: indented, a vector in a line, each number the shortest
// that is read back to the same bits. What a record can hold and XML can't in the usual way:
//
//   NaN other than the fill value   nan(0x123), which the C library reads with all its bits, but
//                                   for those that signal
//   control characters in a label   references, and version 1.1 of XML, which has them; not NUL
//   bytes that are no UTF-8         the name of an encoding that nobody knows: the converter takes
//                                   the bytes as they are then
//   a year below 100                 would be taken for one of two digits, so that months before
//                                   the year 200 stand for it

#include "tools/eqrecord/ParameterFile.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "markup/text/Utf8Sweep.h"
#include "record/Layout.h"
#include "tools/eqrecord/JsonWriter.h"

namespace eqrecord {

namespace {

/// The record drops the first four characters of the root element's name.
constexpr std::string_view rootStart = "TYPE";

constexpr std::uint64_t quietBit = std::uint64_t{1} << 51;

class Writer {
  public:
    Writer(record::RecordReader& record, const record::Reading& reading, const ExportedFile& file,
           std::ostream& out)
        : record_(record), reading_(reading), file_(file), out_(out) {}

    void write();

  private:
    void writeDeclaration();
    void writeConfiguration(const record::Configuration& configuration);
    void writeDetector(const record::Configuration& configuration, int detector);
    void writeVector(const record::Configuration& configuration, int kind, int detector);
    void line(int depth, std::string_view text);
    void element(int depth, std::string_view name, std::string_view text);

    record::RecordReader& record_;
    const record::Reading& reading_;
    const ExportedFile& file_;
    std::ostream& out_;
    std::string root_;
    std::vector<double> values_;
    std::string text_;  ///< of a vector; kept for its memory
};

bool isControl(char c) {
    return (static_cast<unsigned char>(c) < ' ' && c != '\t' && c != '\n' && c != '\r') ||
           c == '\x7F';
}

std::string quotedAttribute(std::string_view value) {
    std::string text = "\"";
    for (const char c : value) {
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7F' || c == '"' || c == '&' ||
            c == '<' || c == '>') {
            text += "&#" + std::to_string(static_cast<int>(c)) + ';';
        } else {
            text += c;
        }
    }
    return text + '"';
}

/// A date as the converter reads it. Its own form has years below 100 as of two digits.
std::string dateText(const std::string& date) {
    constexpr std::size_t rest = std::string_view("-dd-ddTdd:dd:dd").size();
    constexpr int replacement = 200;  // so that the months before it have four digits or more
    const std::size_t yearEnd = date.size() - rest;
    int year = 0;
    int month = 0;
    const auto result = std::from_chars(date.data(), date.data() + yearEnd, year);
    std::from_chars(date.data() + yearEnd + 1, date.data() + yearEnd + 3, month);
    if (result.ec != std::errc() || year >= 100) {
        return date;
    }
    const long long months = month - 12LL * (replacement - year);
    return std::to_string(replacement) + '-' + std::to_string(months) + date.substr(yearEnd + 3);
}

void appendNumber(std::string& text, double value) {
    if (!std::isnan(value)) {
        text += decimalOf(value);
        return;
    }
    const auto bits = std::bit_cast<std::uint64_t>(value);
    const std::uint64_t payload = bits & (quietBit - 1);
    text += std::signbit(value) ? "-nan" : "nan";
    text += payload == 0 ? "" : '(' + hexNumber(payload) + ')';
}

bool isSignalling(double value) {
    return std::isnan(value) && (std::bit_cast<std::uint64_t>(value) & quietBit) == 0;
}

void Writer::write() {
    root_ = std::string(rootStart) + reading_.fileType.substr(record::fileTypePrefix.size());
    writeDeclaration();
    line(0, '<' + root_ + '>');
    line(1, "<HEADER>");
    element(2, "PRODUCTION_DATE", dateText(reading_.creationDate));
    line(1, "</HEADER>");
    line(1, "<SPECIFIC_HEADER>");
    element(2, "APPLICABILITY_DATE", dateText(reading_.applicabilityStart));
    element(2, "APPLICABILITY_END_DATE", dateText(reading_.applicabilityEnd));
    line(1, "</SPECIFIC_HEADER>");
    line(1, "<DATA>");
    element(2, "BAND_ID", std::to_string(file_.file->band));
    if (isSignalling(file_.epsilon())) {
        throw Inexpressible("the epsilon of " + placeOf(file_) + " is a signalling NaN");
    }
    std::string epsilon;
    appendNumber(epsilon, file_.epsilon());
    element(2, "EPSILON", epsilon);
    element(2, "NUC_TABLE_ID", std::to_string(file_.nucTableId));
    for (const record::Configuration* const configuration : file_.configurations) {
        writeConfiguration(*configuration);
    }
    line(1, "</DATA>");
    line(0, "</" + root_ + '>');
}

void Writer::writeDeclaration() {
    bool isUtf8 = markup::plainUtf8Length(root_) == root_.size();
    bool isXml10 = true;
    for (const record::Configuration* const configuration : file_.configurations) {
        const std::string& label = configuration->label;
        if (label.find('\0') != std::string::npos) {
            throw Inexpressible("the label of " + placeOf(file_, *configuration) + " holds a NUL");
        }
        isUtf8 = isUtf8 && markup::plainUtf8Length(label) == label.size();
        isXml10 = isXml10 && std::ranges::none_of(label, isControl);
    }
    out_ << "<?xml version=\"" << (isXml10 ? "1.0" : "1.1") << "\" encoding=\""
         << (isUtf8 ? "UTF-8" : "X-BYTES") << "\"?>\n";
}

void Writer::writeConfiguration(const record::Configuration& configuration) {
    line(2, "<COEFFICIENTS_LIST tdi_config=" + quotedAttribute(configuration.label) + '>');
    values_.resize(static_cast<std::size_t>(configuration.pixels));
    for (int i = 1; configuration.pixels > 0 && i <= record::detectorCount; ++i) {
        writeDetector(configuration, i);
    }
    line(2, "</COEFFICIENTS_LIST>");
}

void Writer::writeDetector(const record::Configuration& configuration, int detector) {
    line(3, "<COEFFICIENTS detector_id=\"" + std::to_string(detector) + "\">");
    element(4, "NB_OF_PIXELS", std::to_string(configuration.pixels));
    line(4, "<ON_BOARD_EQUALIZATION>");
    element(5, "APPLICABILITY_DATE", dateText(reading_.applicabilityStart));
    for (int kind = 0; kind < record::kindCount; ++kind) {
        writeVector(configuration, kind, detector);
    }
    line(4, "</ON_BOARD_EQUALIZATION>");
    line(3, "</COEFFICIENTS>");
}

void Writer::writeVector(const record::Configuration& configuration, int kind, int detector) {
    record_.readVector(configuration, kind, detector, values_);
    text_.clear();
    for (std::size_t i = 0; i < values_.size(); ++i) {
        if (isSignalling(values_[i])) {
            const int vector = kind * record::detectorCount + detector - 1;
            const std::size_t index = static_cast<std::size_t>(vector) * values_.size() + i;
            throw Inexpressible(placeOfValue(file_, configuration, index) + " is a signalling NaN");
        }
        text_ += i > 0 ? " " : "";
        appendNumber(text_, values_[i]);
    }
    element(5, record::kindNames[static_cast<std::size_t>(kind)], text_);
}

void Writer::line(int depth, std::string_view text) {
    out_ << std::string(static_cast<std::size_t>(depth) * 2, ' ') << text << '\n';
}

void Writer::element(int depth, std::string_view name, std::string_view text) {
    out_ << std::string(static_cast<std::size_t>(depth) * 2, ' ') << '<' << name << '>' << text
         << "</" << name << ">\n";
}

}  // namespace

void writeParameterFile(record::RecordReader& record, const record::Reading& reading,
                        const ExportedFile& file, std::ostream& out) {
    Writer(record, reading, file, out).write();
}

bool isElementName(std::string_view name) {
    constexpr std::string_view ends("\0\t\n\r !\"'/;<=>?\\", 15);
    return name.find_first_of(ends) == std::string_view::npos;
}

}  // namespace eqrecord
