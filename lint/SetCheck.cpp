#include "lint/SetCheck.h"

#include <algorithm>
#include <vector>

#include "base/FileUtils.h"

namespace lint {

namespace {

/// From so many on a number text of the record has three digits, and is harder to read.
constexpr std::size_t threeDigits = 100;

std::string listOf(const std::vector<std::string>& texts) {
    std::string list;
    for (const std::string& text : texts) {
        list += (list.empty() ? "" : ", ") + text;
    }
    return list;
}

/// The detectors of `a` that `b` lacks, as a list.
std::string lackedBy(const DetectorPixels& b, const DetectorPixels& a) {
    std::vector<std::string> lacked;
    for (const auto& [detector, pixels] : a) {
        if (!b.contains(detector)) {
            lacked.push_back(std::to_string(detector));
        }
    }
    return listOf(lacked);
}

long greatest(const DetectorPixels& detectors) {
    long pixels = 0;
    for (const auto& [detector, count] : detectors) {
        pixels = std::max(pixels, count);
    }
    return pixels;
}

}  // namespace

SetCheck::SetCheck(Teller& teller, const std::optional<Expectation>& expectation)
    : teller_(teller), expectation_(expectation) {
    if (expectation_ && expectation_->bands) {
        expectedBands_.insert(expectation_->bands->begin(), expectation_->bands->end());
    }
    if (expectation_ && expectation_->labels) {
        expectedLabels_.insert(expectation_->labels->begin(), expectation_->labels->end());
    }
}

void SetCheck::beginFile(std::span<const char* const> paths, std::size_t number) {
    const std::string_view path = paths[number];
    const std::string name(vek::FileUtils::baseName(paths[number], false).view());
    current_.clear();
    elems_.clear();
    filePixels_.reset();
    fileName_ = name;
    const bool isNewPath = paths_.emplace(path).second;
    if (!isNewPath) {
        teller_.tell("EQ104", Severity::warning, 0,
                     "the file stands twice in the set: it is written twice");
    }
    if (!names_.insert(name).second && isNewPath) {
        teller_.tell("EQ105", Severity::note, 0,
                     "another file of the set is called " + inQuotes(name) + ", too");
    }
    if (name.size() >= threeDigits) {
        teller_.tell("EQ105", Severity::note, 0,
                     "the file's name has 100 bytes or more: the record is harder to read");
    }
    if (number == 0 && paths.size() >= threeDigits) {
        teller_.tell("EQ105", Severity::note, 0,
                     "the set has 100 files or more: the record is harder to read");
    }
}

void SetCheck::root(std::string_view name, int elem) {
    if (!rootName_) {
        rootName_ = name;
    } else if (*rootName_ != name) {
        teller_.tell("EQ103", Severity::warning, elem,
                     "the file type is " + inQuotes(name) + ", that of the first file " +
                         inQuotes(*rootName_) + ": it is converted all the same");
    }
}

void SetCheck::band(long band, int elem) {
    band_ = band;
    if (!bands_.insert(band).second) {
        teller_.tell("EQ104", Severity::warning, elem,
                     "band " + std::to_string(band) + " stands twice in the set: both are written");
    }
    if (!expectation_ || !expectation_->bands) {
        return;
    }
    if (const auto expected = expectedBands_.find(band); expected != expectedBands_.end()) {
        expectedBands_.erase(expected);
    } else {
        teller_.tell("EQ812", Severity::error, elem,
                     "band " + std::to_string(band) + " is not expected, or not so often");
    }
}

void SetCheck::nucTable(long id, int elem) {
    if (expectation_ && expectation_->nucTableId && *expectation_->nucTableId != id) {
        teller_.tell("EQ811", Severity::error, elem,
                     "NUC table " + std::to_string(id) + ", expected is " +
                         std::to_string(*expectation_->nucTableId));
    }
}

void SetCheck::configuration(std::string_view label, const DetectorPixels& detectors, int elem) {
    const auto [place, isNew] = current_.emplace(label, detectors);
    elems_.emplace(label, elem);
    if (!isNew) {
        teller_.tell(
            "EQ502", Severity::warning, elem,
            "configuration " + inQuotes(label) + " stands twice in the file: both are written");
    }
    if (label.size() >= threeDigits) {
        teller_.tell("EQ503", Severity::note, elem,
                     "the label has 100 bytes or more: the record is harder to read");
    }
    compareDetectors(label, detectors, elem);
    comparePixels(detectors, elem);
    checkExpected(detectors, elem);
    if (expectation_ && expectation_->labels && !expectedLabels_.contains(label)) {
        teller_.tell("EQ813", Severity::error, elem,
                     "configuration " + inQuotes(label) + " is not expected");
    }
}

/// Compares with the first configuration of the set that has any detectors.
void SetCheck::compareDetectors(std::string_view label, const DetectorPixels& detectors, int elem) {
    if (detectors.empty()) {
        return;
    }
    if (usual_.empty()) {
        usual_ = detectors;
        usualName_ = "configuration " + inQuotes(label) + " of " + shortened(fileName_);
    }
    const std::string lacked = lackedBy(detectors, usual_);
    const std::string further = lackedBy(usual_, detectors);
    if (!lacked.empty()) {
        teller_.tell("EQ802", Severity::note, elem,
                     "without detectors that " + usualName_ + " has: " + lacked);
    }
    if (!further.empty()) {
        teller_.tell("EQ802", Severity::note, elem,
                     "with detectors that " + usualName_ + " lacks: " + further);
    }
}

/// Compares with the first configuration of the file: other bands have other numbers of pixels.
void SetCheck::comparePixels(const DetectorPixels& detectors, int elem) {
    const long pixels = greatest(detectors);
    if (!filePixels_) {
        filePixels_ = pixels;
    } else if (*filePixels_ != pixels && !detectors.empty()) {
        teller_.tell("EQ803", Severity::note, elem,
                     std::to_string(pixels) + " pixels, the first configuration of the file has " +
                         std::to_string(*filePixels_));
    }
}

void SetCheck::checkExpected(const DetectorPixels& detectors, int elem) {
    if (!expectation_) {
        return;
    }
    if (expectation_->detectors) {
        DetectorPixels expected;
        for (const long detector : *expectation_->detectors) {
            expected[detector] = 0;
        }
        const std::string lacked = lackedBy(detectors, expected);
        const std::string further = lackedBy(expected, detectors);
        if (!lacked.empty() || !further.empty()) {
            teller_.tell("EQ814", Severity::error, elem,
                         "detectors missing: " + (lacked.empty() ? "none" : lacked) +
                             ", not expected: " + (further.empty() ? "none" : further));
        }
    }
    const auto pixels = expectation_->pixels.find(band_);
    if (pixels == expectation_->pixels.end()) {
        return;
    }
    for (const auto& [detector, count] : detectors) {
        if (count != pixels->second) {
            teller_.tell("EQ814", Severity::error, elem,
                         "detector " + std::to_string(detector) + " has " + std::to_string(count) +
                             " pixels, expected are " + std::to_string(pixels->second));
        }
    }
}

void SetCheck::endFile(int dataElem) {
    compareLabels(dataElem);
    if (expectation_ && expectation_->labels) {
        for (const std::string& label : expectedLabels_) {
            if (!current_.contains(label)) {
                teller_.tell("EQ813", Severity::error, dataElem,
                             "configuration " + inQuotes(label) + " is expected and missing");
            }
        }
    }
    if (!first_) {
        first_ = std::move(current_);
    }
    current_.clear();
}

void SetCheck::compareLabels(int dataElem) {
    if (!first_) {
        return;
    }
    for (const auto& [label, detectors] : *first_) {
        if (!current_.contains(label)) {
            teller_.tell("EQ801", Severity::note, dataElem,
                         "without configuration " + inQuotes(label) + ", which the first file has");
        }
    }
    for (const auto& [label, elem] : elems_) {
        if (!first_->contains(label)) {
            teller_.tell("EQ801", Severity::note, elem,
                         "configuration " + inQuotes(label) + " is not in the first file");
        }
    }
}

void SetCheck::endSet() {
    for (const long band : expectedBands_) {
        teller_.tell(
            "EQ812", Severity::error, 0,
            "band " + std::to_string(band) + " is expected and missing, or comes not so often");
    }
}

}  // namespace lint
