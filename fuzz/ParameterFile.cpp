#include "fuzz/ParameterFile.h"

#include <array>
#include <cstdio>
#include <string_view>

namespace {

using Texts = std::string_view;

constexpr Texts types[] = {"TEST_EQ_TABLE", "ABCD", "ABC", "_:.-x", "TEST_EQ_TABLF", "html"};
constexpr Texts integers[] = {"7",  "0",     "1",     "-1",    "255",    "256",
                              "+4", "32767", "32768", "65543", "-65529", "99999999999999999999",
                              "7x", "",      "0x10",  "\t7"};
constexpr Texts detectorIds[] = {"1", "2", "12", "13", "0", "-1", "", "4294967297", "1 ", "x"};
/// Of vectors that have not as many values as the count says, most are refused.
constexpr Texts pixelCounts[] = {"0", "-1", "32768", "65536", "-65533", "", "300", "9999999999"};
constexpr Texts numbers[] = {"1.5",
                             "-0",
                             ".5",
                             "5.",
                             "1e400",
                             "-1e400",
                             "1e-400",
                             "4.9e-324",
                             "0x1.8p1",
                             "0x",
                             "inf",
                             "-nan",
                             "nan(7)",
                             "1,5",
                             "1e",
                             "1e+308",
                             "\t7",
                             "1\t2",
                             "--1",
                             "",
                             "1_0",
                             "123456789012345678901234567890",
                             "9007199254740993",
                             "0.1",
                             "1e22",
                             "2.2250738585072011e-308",
                             "-17.5e-03",
                             "abc",
                             "<3&"};
constexpr Texts labels[] = {
    "ALL", "", "A \"B\" 'C'", "<&>;", "x y", "tdi_config=\"7\"", "\xC3\xA9\xE2\x82\xAC"};
constexpr Texts vectorNames[] = {"COEFF_A1", "COEFF_A2", "COEFF_ZS", "COEFF_D"};

std::string pickInteger(FuzzInput& in) {
    return in.oneIn(4) ? std::to_string(in.raw<std::int32_t>() >> in.upTo(31))
                       : std::string(in.choose(integers));
}

std::string pickNumber(FuzzInput& in) {
    if (!in.oneIn(3)) {
        return std::string(in.choose(numbers));
    }
    const char* const format = in.oneIn(2) ? "%.*e" : "%.*g";
    char text[64];
    std::snprintf(text, sizeof text, format, static_cast<int>(in.upTo(20)), in.raw<double>());
    return text;
}

/// A date that comes out as it is, one that can't be read, or none.
std::string pickDate(FuzzInput& in) {
    if (in.oneIn(8)) {
        return in.oneIn(2) ? "soon" : "";
    }
    char text[64];
    std::snprintf(text, sizeof text, "%04ld-%02u-%02uT%02u:%02u:%02u", in.pick(1601, 2400),
                  in.upTo(11) + 1, in.upTo(27) + 1, in.upTo(23), in.upTo(59), in.upTo(59));
    return text;
}

ParameterFile::Detector pickDetector(FuzzInput& in) {
    ParameterFile::Detector detector;
    detector.id =
        in.oneIn(6) ? std::string(in.choose(detectorIds)) : std::to_string(in.upTo(11) + 1);
    const unsigned count = in.upTo(5);
    detector.pixels = in.oneIn(20) ? std::string(in.choose(pixelCounts)) : std::to_string(count);
    const unsigned vectors = in.oneIn(4) ? in.upTo(5) : 4;
    for (unsigned i = 0; i < vectors; ++i) {
        std::string values;
        const unsigned valueCount = in.oneIn(30) ? in.upTo(70) : count;
        for (unsigned k = 0; k < valueCount; ++k) {
            values.append(k == 0 ? "" : " ").append(pickNumber(in));
        }
        detector.vectors.push_back({std::string(vectorNames[(i + in.byte()) % 4]), values});
    }
    return detector;
}

/// Writes XML in the ways that the input chooses.
class XmlWriter {
  public:
    explicit XmlWriter(FuzzInput& in) : in_(in) {}

    std::string text;

    void open(Texts name, Texts attribute = {}, Texts value = {}) {
        between();
        text.append("<").append(name);
        if (!attribute.empty()) {
            const bool isDouble = !in_.oneIn(2);
            text.append(in_.oneIn(5) ? "\n\tx = 'a>b' " : " ").append(attribute).append("=");
            text += isDouble ? '"' : '\'';
            for (const char c : value) {
                putAttributeByte(c, isDouble ? '"' : '\'');
            }
            text += isDouble ? '"' : '\'';
        }
        text.append(in_.oneIn(5) ? " >" : ">");
    }
    void close(Texts name) {
        between();
        text.append("</").append(name).append(in_.oneIn(5) ? "\n>" : ">");
    }
    /// An element with a text. Unless it `hasToBeOne` it may be missing when the text is empty, or
    /// be followed by others, which don't count.
    void leaf(Texts name, Texts value, bool hasToBeOne = false) {
        if (value.empty() && !hasToBeOne && in_.oneIn(2)) {
            return;
        }
        open(name);
        putData(value);
        text.append("</").append(name).append(">");
        if (!hasToBeOne && in_.oneIn(16)) {
            text.append("<").append(name).append(">1</").append(name).append(">");
        }
    }
    /// Something between elements that makes no difference; `isStranger`: also an element.
    void between(bool isStranger = false) {
        static constexpr Texts others[] = {"",
                                           "\n",
                                           "<!-- <COEFF_A1> -->",
                                           "<?pi DATA?>",
                                           "noise &amp; ",
                                           "<![CDATA[<DATA>]]>",
                                           "<?x <?>\r\n"};
        text.append(in_.choose(others));
        if (isStranger && in_.oneIn(8)) {
            text.append("<OTHER a='b'><DATA>9</DATA></OTHER>");
        }
    }

  private:
    void putReference(unsigned char c) {
        char reference[16];
        std::snprintf(reference, sizeof reference, in_.oneIn(2) ? "&#x%x;" : "&#%u;", c);
        text.append(reference);
    }
    void putAttributeByte(char c, char quote) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '&' || c == quote || (byte < 0x80 && in_.oneIn(9))) {
            putReference(byte);
        } else {
            text += c;
        }
    }
    /// White space is written as references beside marks: a run of nothing else would be dropped.
    void putData(Texts value) {
        while (!value.empty()) {
            const unsigned way = in_.upTo(15);
            const Texts piece = value.substr(0, way < 12 ? value.size() : in_.upTo(5) + 1);
            value.remove_prefix(piece.size());
            const bool isBlank = piece.find_first_not_of(" \t\n") == Texts::npos;
            if (way == 15 && piece.find("]]>") == Texts::npos) {
                text.append("<![CDATA[").append(piece).append("]]>");
                continue;
            }
            for (const char c : piece) {
                if (c == '<' || c == '&' || way == 14 || isBlank) {
                    putReference(static_cast<unsigned char>(c));
                } else {
                    text += c;
                }
            }
            text.append(way == 13 ? "<!--]]>-->" : "");
        }
    }

    FuzzInput& in_;
};

void writeDetector(const ParameterFile::Detector& detector, XmlWriter& xml) {
    xml.open("COEFFICIENTS", "detector_id", detector.id);
    xml.leaf("NB_OF_PIXELS", detector.pixels);
    xml.between(true);
    xml.open("ON_BOARD_EQUALIZATION");
    xml.leaf("APPLICABILITY_DATE", "x", true);
    for (const ParameterFile::Vector& vector : detector.vectors) {
        xml.leaf(vector.name, vector.values, true);
    }
    xml.close("ON_BOARD_EQUALIZATION");
    xml.close("COEFFICIENTS");
}

}  // namespace

ParameterFile pickFile(FuzzInput& in) {
    ParameterFile file;
    file.type = in.oneIn(6) ? in.choose(types) : types[0];
    for (std::string& date : file.dates) {
        date = pickDate(in);
    }
    file.band = pickInteger(in);
    file.epsilon = pickNumber(in);
    file.nucTable = in.oneIn(3) ? pickInteger(in) : "7";
    file.configurations.resize(in.oneIn(3) ? in.upTo(4) : 1);
    for (ParameterFile::Configuration& configuration : file.configurations) {
        configuration.label = in.choose(labels);
        for (unsigned i = in.upTo(3); i > 0; --i) {
            configuration.detectors.push_back(pickDetector(in));
        }
    }
    return file;
}

std::string writeXml(const ParameterFile& file, FuzzInput& in) {
    static constexpr Texts prologues[] = {"", "<?xml version='1.0'?>",
                                          "<!DOCTYPE a [<!ENTITY b '>'>]>"};
    XmlWriter xml(in);
    xml.text = in.choose(prologues);
    xml.open(file.type);
    xml.open("HEADER");
    xml.leaf("PRODUCTION_DATE", file.dates[0]);
    xml.close("HEADER");
    xml.between(true);
    xml.open("SPECIFIC_HEADER");
    xml.leaf("APPLICABILITY_DATE", file.dates[1]);
    xml.leaf("APPLICABILITY_END_DATE", file.dates[2]);
    xml.close("SPECIFIC_HEADER");
    xml.between(true);
    xml.open("DATA");
    xml.leaf("BAND_ID", file.band);
    xml.leaf("EPSILON", file.epsilon);
    xml.between(true);
    xml.leaf("NUC_TABLE_ID", file.nucTable);
    for (const ParameterFile::Configuration& configuration : file.configurations) {
        xml.between(true);
        xml.open("COEFFICIENTS_LIST", "tdi_config", configuration.label);
        for (const ParameterFile::Detector& detector : configuration.detectors) {
            xml.between(true);
            writeDetector(detector, xml);
        }
        xml.close("COEFFICIENTS_LIST");
    }
    xml.close("DATA");
    xml.close(file.type);
    return xml.text;
}
