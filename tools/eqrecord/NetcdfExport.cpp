// All configurations of a record stand in one array a kind, so that a program reads them with two
// lines: a configuration with fewer pixels than the widest is filled up with the fill value, and
// `pixels` tells where. What the record doesn't tell, such as units, is not made up. Nothing
// depends on the clock or the machine, so that the same command gives the same bytes.

#include "tools/eqrecord/NetcdfExport.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <numeric>
#include <span>
#include <string_view>
#include <vector>

#include "record/Layout.h"
#include "tools/eqrecord/Digest.h"
#include "tools/eqrecord/Telling.h"

namespace eqrecord {

namespace {

/// "coeff_a1"
std::string variableName(int kind) {
    std::string name(record::kindNames[static_cast<std::size_t>(kind)]);
    std::ranges::transform(name, name.begin(), [](unsigned char c) { return std::tolower(c); });
    return name;
}

class Export {
  public:
    Export(OpenRecord& record, const Selection& selection, NetcdfFile& file);

    void addAttributes(const std::string& history);
    void addVariables();
    void write();

  private:
    /// Variables with a value, or a text, for each configuration.
    struct Variables {
        int label, fileName, file, band, nucTableId, pixels, epsilon;
    };

    void choose();
    int addVariable(const std::string& name, nc_type type, std::span<const int> dimensions,
                    const char* longName);
    void addCoordinate(const char* name, int dimension, const char* longName,
                       const std::vector<int>& values);
    void addKind(int kind, std::span<const int> dimensions);
    void writeBlock(std::size_t index);
    void writeKind(std::size_t index, int kind, int variable);
    void writeText(std::size_t index, int variable, const std::string& text, std::size_t length);

    OpenRecord& record_;
    const Selection& selection_;
    NetcdfFile& file_;
    std::vector<Block> blocks_;
    std::vector<int> nucTableIds_;  ///< by block
    std::vector<int> detectors_;    ///< from 1
    std::vector<int> pixels_;       ///< from 1
    std::size_t labelLength_ = 1;
    std::size_t nameLength_ = 1;
    std::vector<int> coordinates_;  ///< variables of the detectors and the pixels
    Variables variables_{};
    std::vector<std::pair<int, int>> kinds_;  ///< each with its variable
    std::vector<double> values_;              ///< of a kind, as in the record
    std::vector<double> shown_;               ///< those that are written
};

Export::Export(OpenRecord& record, const Selection& selection, NetcdfFile& file)
    : record_(record),
      selection_(selection),
      file_(file),
      blocks_(selection.blocksOf(record.reading())) {
    choose();
}

/// Finds out what there is to be written. A file of no pixels has one place for them, with fill
/// values, as a length of 0 would mean something else.
void Export::choose() {
    for (int detector = 1; detector <= record::detectorCount; ++detector) {
        if (selection_.takesDetector(detector)) {
            detectors_.push_back(detector);
        }
    }
    std::int16_t nucTableId = 0;
    std::size_t count = 0;
    auto block = blocks_.begin();
    for (const record::File& file : record_.reading().files) {
        nucTableId = file.nucTableId.value_or(nucTableId);
        for (; block != blocks_.end() && block->file == &file; ++block) {
            const record::Configuration& configuration = *block->configuration;
            const auto pixels = static_cast<std::size_t>(configuration.pixels);
            count = std::max(count, selection_.pixelsOf(pixels).count);
            labelLength_ = std::max(labelLength_, configuration.label.size());
            nameLength_ = std::max(nameLength_, file.name.size());
            nucTableIds_.push_back(nucTableId);
        }
    }
    pixels_.resize(std::max<std::size_t>(count, 1));
    std::iota(pixels_.begin(), pixels_.end(), static_cast<int>(selection_.pixelsOf(count).first));
}

void Export::addAttributes(const std::string& history) {
    const record::Reading& reading = record_.reading();
    const auto add = [this](const char* name, std::string_view text) {
        file_.addText(NetcdfFile::global, name, text);
    };
    const std::size_t slash = record_.path().rfind('/');
    const std::string name = record_.path().substr(slash == std::string::npos ? 0 : slash + 1);
    add("Conventions", "CF-1.8");
    add("title", "Equalisation coefficients");
    add("history", history);
    add("source",
        (name == "-" ? "standard input" : name) + ", SHA-256 " + sha256Of(record_.reader()));
    add("file_type", reading.fileType);
    add("creation_date", reading.creationDate);
    add("applicability_start", reading.applicabilityStart);
    add("applicability_end", reading.applicabilityEnd);
    // The classic model has no integer that could hold them all.
    file_.addReal(NetcdfFile::global, "record_bytes", static_cast<double>(record_.reader().size()));
    add("byte_order", nameOf(record_.outcome().order));
    add("state", nameOf(record_.outcome().state));
    if (record_.isIncomplete()) {
        file_.addInteger(NetcdfFile::global, "incomplete", 1);
    }
}

int Export::addVariable(const std::string& name, nc_type type, std::span<const int> dimensions,
                        const char* longName) {
    const int variable = file_.addVariable(name.c_str(), type, dimensions);
    file_.addText(variable, "long_name", longName);
    return variable;
}

void Export::addVariables() {
    const int configuration = file_.addDimension("configuration", blocks_.size());
    const int detector = file_.addDimension("detector", detectors_.size());
    const int pixel = file_.addDimension("pixel", pixels_.size());
    const int label = file_.addDimension("label_length", labelLength_);
    const int name = file_.addDimension("name_length", nameLength_);
    for (const auto& [coordinate, longName] :
         {std::pair{detector, "detector number"}, std::pair{pixel, "pixel number"}}) {
        const char* const title = coordinate == detector ? "detector" : "pixel";
        coordinates_.push_back(addVariable(title, NC_INT, {&coordinate, 1}, longName));
        file_.addText(coordinates_.back(), "units", "1");
    }
    const std::array labels{configuration, label};
    const std::array names{configuration, name};
    const std::span<const int> each(&configuration, 1);
    variables_.label = addVariable("tdi_configuration", NC_CHAR, labels, "TDI configuration");
    variables_.fileName = addVariable("file_name", NC_CHAR, names, "name of the parameter file");
    variables_.file = addVariable("file", NC_INT, each, "number of the file in the record");
    variables_.band = addVariable("band", NC_INT, each, "spectral band");
    variables_.nucTableId = addVariable("nuc_table_id", NC_INT, each, "NUC table identifier");
    variables_.pixels = addVariable("pixels", NC_INT, each, "pixels per vector");
    variables_.epsilon = addVariable("epsilon", NC_DOUBLE, each, "epsilon");
    const std::array all{configuration, detector, pixel};
    for (int kind = 0; kind < record::kindCount; ++kind) {
        if (selection_.takesKind(kind)) {
            addKind(kind, all);
        }
    }
}

void Export::addKind(int kind, std::span<const int> dimensions) {
    static constexpr std::array longNames{"coefficient A1", "coefficient A2", "coefficient ZS",
                                          "coefficient D"};
    const int variable = addVariable(variableName(kind), NC_DOUBLE, dimensions,
                                     longNames[static_cast<std::size_t>(kind)]);
    file_.addReal(variable, "_FillValue", record::fillValue);
    file_.addText(variable, "coordinates", "band tdi_configuration file_name epsilon pixels");
    const std::array<std::size_t, 3> piece{1, detectors_.size(), pixels_.size()};
    file_.compress(variable, piece);
    kinds_.emplace_back(kind, variable);
}

void Export::write() {
    const std::array values{&detectors_, &pixels_};
    for (std::size_t i = 0; i < values.size(); ++i) {
        const std::size_t start = 0;
        const std::size_t count = values[i]->size();
        file_.write(coordinates_[i], {&start, 1}, {&count, 1}, values[i]->data());
    }
    for (std::size_t i = 0; i < blocks_.size(); ++i) {
        writeBlock(i);
    }
}

void Export::writeBlock(std::size_t index) {
    const Block& block = blocks_[index];
    const std::size_t one = 1;
    const auto write = [&](int variable, auto value) {
        file_.write(variable, {&index, 1}, {&one, 1}, &value);
    };
    writeText(index, variables_.label, block.configuration->label, labelLength_);
    writeText(index, variables_.fileName, block.file->name, nameLength_);
    write(variables_.file, static_cast<int>(block.fileNumber));
    write(variables_.band, int{block.file->band});
    write(variables_.nucTableId, nucTableIds_[index]);
    write(variables_.pixels, int{block.configuration->pixels});
    write(variables_.epsilon, block.configuration->epsilon());
    for (const auto& [kind, variable] : kinds_) {
        writeKind(index, kind, variable);
    }
}

void Export::writeText(std::size_t index, int variable, const std::string& text,
                       std::size_t length) {
    std::string padded = text;
    padded.resize(length);  // with NUL, as the fill value is
    file_.write(variable, std::array<std::size_t, 2>{index, 0},
                std::array<std::size_t, 2>{1, length}, padded.data());
}

void Export::writeKind(std::size_t index, int kind, int variable) {
    const record::Configuration& configuration = *blocks_[index].configuration;
    const auto pixels = static_cast<std::size_t>(configuration.pixels);
    const auto [first, count] = selection_.pixelsOf(pixels);
    values_.resize(pixels * record::detectorCount);
    record_.reader().readKind(configuration, kind, values_);
    shown_.assign(detectors_.size() * pixels_.size(), record::fillValue);
    for (std::size_t i = 0; count > 0 && i < detectors_.size(); ++i) {
        const std::size_t before = static_cast<std::size_t>(detectors_[i] - 1) * pixels + first - 1;
        std::copy_n(&values_[before], count, &shown_[i * pixels_.size()]);
    }
    file_.write(variable, std::array<std::size_t, 3>{index, 0, 0},
                std::array<std::size_t, 3>{1, detectors_.size(), pixels_.size()}, shown_.data());
}

}  // namespace

void exportNetcdf(OpenRecord& record, const Selection& selection, const std::string& history,
                  NetcdfFile& file) {
    Export output(record, selection, file);
    output.addAttributes(history);
    output.addVariables();
    file.beginValues();
    output.write();
    file.close();
}

}  // namespace eqrecord
