// The converter asks for one thing after the other and not what it found; so what is missing shows
// only when it looks for the next: a detector ends when another one or another configuration is
// sought.

#include "lint/ConfigurationCheck.h"

#include <algorithm>
#include <cstdint>
#include <functional>

#include "converter/CoefficientTable.h"
#include "lint/ElementSearch.h"
#include "lint/FieldCheck.h"
#include "lint/ScalarCheck.h"
#include "lint/SourceText.h"

namespace lint {

namespace {

std::string kindName(std::size_t kind) {
    return std::string(record::kindNames[kind]);
}

void appendName(std::string& list, std::string_view name) {
    list.append(list.empty() ? "" : ", ").append(name);
}

/// Whether a value is another one where it counts as a list of words.
bool hasOddSpaces(std::string_view value) {
    return value.starts_with(' ') || value.ends_with(' ') ||
           value.find("  ") != std::string_view::npos;
}

}  // namespace

void ConfigurationCheck::sought(Sought what, const MarkupDocument& document, int elem) {
    document_ = &document;
    switch (what) {
        case Sought::Configuration:
            endConfiguration();
            beginConfiguration(elem);
            break;
        case Sought::Detector:
            endDetector();
            beginDetector(elem);
            break;
        case Sought::PixelCount:
            readPixels(elem);
            break;
        case Sought::Equalization:
            foundEqualization(elem);
            break;
        case Sought::VectorDate:
            foundVectorDate(elem);
            break;
        default:
            foundVector(elem);
    }
}

void ConfigurationCheck::beginConfiguration(int elem) {
    configurationElem_ = elem;
    pixels_.clear();
    isSeen_ = {};
    hasDetector_ = false;
    if (elem == 0) {
        return;
    }
    const SourceText label = SourceText::ofAttribute(*document_, elem, "tdi_config");
    label_ = label.text();
    if (label_.empty()) {
        teller_.tell("EQ501", Severity::warning, elem,
                     label.isThere() ? "the configuration's tdi_config is empty: so is its label"
                                     : "the configuration has no tdi_config: its label is empty");
    } else if (label.differsFromXml() || (hasOddSpaces(label_) && markup_.labelsAreTokens())) {
        teller_.tell(
            "EQ505", Severity::warning, {label.rawOffset(), label.raw().size()}, elem,
            "the label is written as " + inQuotes(label_) + ", other programs read another one");
    } else if (label.hasReferences()) {
        teller_.tell("EQ706", Severity::note, {label.rawOffset(), label.raw().size()}, elem,
                     "the label is written with references");
    }
}

void ConfigurationCheck::endConfiguration() {
    endDetector();
    if (configurationElem_ == 0) {
        return;
    }
    DetectorPixels detectors;
    long most = 0;
    for (const Pixels& detector : pixels_) {
        most = std::max<long>(most, detector.count);
        if (detector.id >= 1 && detector.id <= record::detectorCount) {
            detectors[detector.id] = std::max<long>(detectors[detector.id], detector.count);
        }
    }
    tellFewerPixels(most);
    if (!hasDetector_) {
        teller_.tell("EQ504", Severity::note, configurationElem_,
                     "the configuration has no detector: it is written with 0 pixels");
    }
    set_.configuration(label_, detectors, configurationElem_);
    configurationElem_ = 0;
}

/// Tells of the detectors that have fewer pixels than the record has for each.
void ConfigurationCheck::tellFewerPixels(long most) {
    teller_.beginGroup("configuration " + inQuotes(label_));
    for (const Pixels& detector : pixels_) {
        if (detector.count >= 0 && detector.count < most) {
            teller_.tell("EQ611", Severity::note, detector.elem,
                         "detector " + std::to_string(detector.id) + " has " +
                             std::to_string(detector.count) + " of " + std::to_string(most) +
                             " pixels: the others are written as NaN");
        }
    }
    teller_.endGroup();
}

void ConfigurationCheck::beginDetector(int elem) {
    detector_ = {};
    detector_.elem = elem;
    if (elem != 0) {
        hasDetector_ = true;
        readDetectorId();
    }
}

void ConfigurationCheck::readDetectorId() {
    const SourceText source = SourceText::ofAttribute(*document_, detector_.elem, "detector_id");
    detector_.hasId = source.isThere();
    if (!detector_.hasId) {
        teller_.tell("EQ602", Severity::warning, detector_.elem,
                     "the detector has no detector_id: it is read as 0", "0");
        return;
    }
    Integer id{"EQ602", "detector_id"};
    readInteger(teller_, source, detector_.elem, id);
    detector_.id = static_cast<int>(id.value);
    const Range range{source.rawOffset(), source.raw().size()};
    if (detector_.id != id.value) {
        teller_.tell("EQ602", Severity::warning, range, detector_.elem,
                     "detector_id " + id.written + " is read as " + std::to_string(detector_.id),
                     std::to_string(detector_.id));
    }
    if (!detector_.isOutside()) {
        bool& isSeen = isSeen_[static_cast<std::size_t>(detector_.id)];
        if (isSeen) {
            teller_.tell("EQ603", Severity::warning, detector_.elem,
                         detector_.name() + " stands twice: its values are appended");
        }
        isSeen = true;
    }
}

void ConfigurationCheck::endDetector() {
    if (detector_.elem == 0) {
        return;
    }
    if (detector_.isOutside() && detector_.hasId && !detector_.isOutsideTold) {
        teller_.tell("EQ602", Severity::warning, detector_.elem,
                     detector_.name() + " is outside 1 to 12: only its pixel count is used");
    }
    tellMissingKinds();
    if (detector_.pixelElem != 0) {
        pixels_.push_back({detector_.elem, detector_.id, detector_.pixels});
    }
    detector_ = {};
}

void ConfigurationCheck::tellMissingKinds() {
    std::string missing;
    for (std::size_t kind = 0; kind < record::kindCount; ++kind) {
        if (!detector_.isRead[kind] && !detector_.isIgnored[kind]) {
            appendName(missing, kindName(kind));
        }
    }
    if (detector_.equalizationElem != 0 && !missing.empty() && !detector_.isOutside()) {
        teller_.tell("EQ610", Severity::warning, detector_.equalizationElem,
                     detector_.name() + " lacks " + missing + ": written as NaN");
    }
}

void ConfigurationCheck::readPixels(int elem) {
    detector_.pixelElem = elem;
    if (elem == 0) {
        return;  // what that means shows when the equalization is sought
    }
    FieldCheck(teller_, *document_).checkOnce("NB_OF_PIXELS", elem);
    Integer pixels{"EQ605", "NB_OF_PIXELS"};
    readInteger(teller_, SourceText::ofElement(*document_, elem), elem, pixels);
    detector_.pixels = static_cast<std::int16_t>(pixels.value);
    detector_.writtenPixels = pixels.written;
    if (pixels.value < 0) {
        const std::string read = std::to_string(detector_.pixels);
        teller_.tell("EQ605", Severity::warning, elem,
                     "NB_OF_PIXELS " + pixels.written + " of " + detector_.name() +
                         " is below 0 and read as " + read,
                     read);
    }
}

void ConfigurationCheck::foundEqualization(int elem) {
    detector_.equalizationElem = elem;
    const FieldCheck field(teller_, *document_);
    if (elem != 0) {
        field.checkOnce("ON_BOARD_EQUALIZATION", elem);
        if (detector_.pixelElem == 0) {
            field.tellMissing("EQ402", "NB_OF_PIXELS", ": it is read as 0");
        }
    } else if (detector_.pixelElem != 0 && detector_.isOutside()) {
        return;  // nothing of it is written anyway
    } else if (detector_.pixelElem != 0) {
        teller_.tell("EQ606", Severity::warning, detector_.elem,
                     detector_.name() +
                         " has no ON_BOARD_EQUALIZATION behind NB_OF_PIXELS: it is "
                         "written as NaN");
    } else {
        tellLost();
    }
}

/// Tells of what is not read because the converter leaves one level too many.
void ConfigurationCheck::tellLost() {
    std::string lost;
    for (int elem = nextNamed(*document_, configurationElem_, "COEFFICIENTS_LIST"); elem != 0;
         elem = nextNamed(*document_, elem, "COEFFICIENTS_LIST")) {
        constexpr std::size_t enough = 60;
        if (lost.size() > enough) {
            lost += ", ...";
            break;
        }
        appendName(lost, inQuotes(SourceText::ofAttribute(*document_, elem, "tdi_config").text()));
    }
    const std::string rest = "the rest of configuration " + inQuotes(label_);
    teller_.tell(
        "EQ607", Severity::warning, detector_.elem,
        detector_.name() + " has neither NB_OF_PIXELS nor ON_BOARD_EQUALIZATION: " + rest +
            (lost.empty() ? " is not read" : " and configurations " + lost + " are not read"));
}

void ConfigurationCheck::foundVectorDate(int elem) {
    if (detector_.equalizationElem == 0) {
        return;
    }
    if (elem == 0) {
        teller_.tell("EQ612", Severity::note, detector_.equalizationElem,
                     detector_.name() + " has no APPLICABILITY_DATE");
        return;
    }
    for (int other = document_->record(detector_.equalizationElem).child;
         other != elem && other != 0; other = document_->record(other).next) {
        const int kind = CoefficientTable::kindOf(document_->tagNameView(other));
        if (kind >= 0) {
            detector_.isIgnored[static_cast<std::size_t>(kind)] = true;
            teller_.tell("EQ608", Severity::warning, other,
                         kindName(static_cast<std::size_t>(kind)) + " of " + detector_.name() +
                             " stands before APPLICABILITY_DATE: it is skipped");
        }
    }
}

void ConfigurationCheck::foundVector(int elem) {
    teller_.endGroup();
    vectorElem_ = elem;
    if (elem == 0) {
        return;
    }
    const int kind = CoefficientTable::kindOf(document_->tagNameView(elem));
    if (kind < 0) {
        endVectors(elem);
    } else {
        readVector(elem, static_cast<std::size_t>(kind));
    }
}

void ConfigurationCheck::readVector(int elem, std::size_t kind) {
    const std::string name = kindName(kind) + " of " + detector_.name();
    if (detector_.isRead[kind]) {
        teller_.tell("EQ603", Severity::warning, elem,
                     name + " stands twice: its values are appended");
    }
    detector_.isRead[kind] = true;
    teller_.beginGroup(name);
    vectorCheck_.check(*document_, elem, name);
    markup_.skip(vectorCheck_.markupFree());
}

/// The vectors that stand behind an element, which are noted as ignored.
std::string ConfigurationCheck::kindsBehind(int elem) {
    std::string names;
    for (int other = elem; other != 0; other = document_->record(other).next) {
        const int kind = CoefficientTable::kindOf(document_->tagNameView(other));
        if (kind >= 0 && !detector_.isIgnored[static_cast<std::size_t>(kind)]) {
            detector_.isIgnored[static_cast<std::size_t>(kind)] = true;
            appendName(names, kindName(static_cast<std::size_t>(kind)));
        }
    }
    return names;
}

void ConfigurationCheck::endVectors(int elem) {
    const std::string name = shortened(document_->tagNameView(elem));
    const std::string behind = kindsBehind(elem);
    if (detector_.equalizationElem == 0) {
        return;
    }
    const bool haveAllCome = std::ranges::all_of(detector_.isRead, std::identity());
    if (behind.empty() && haveAllCome) {
        teller_.tell("EQ609", Severity::note, elem,
                     name + " behind the vectors of " + detector_.name() + " is not read");
    } else {
        teller_.tell("EQ609", Severity::warning, elem,
                     name + " ends the vectors of " + detector_.name() +
                         (behind.empty() ? "" : ": " + behind + " behind it are ignored"));
    }
}

void ConfigurationCheck::end(Sought last, std::string_view message) {
    const std::string ends = ": the run ends here with status 255";
    if (last == Sought::PixelCount) {
        teller_.tell("EQ604", Severity::error, detector_.pixelElem,
                     "NB_OF_PIXELS " + detector_.writtenPixels + " of " + detector_.name() +
                         " is above 32767" + ends);
    } else if (!detector_.isOutside()) {
        tellTooFew(message.substr(0, message.find('\n')));
    } else if (!detector_.isOutsideTold) {
        detector_.isOutsideTold = true;
        teller_.tell("EQ601", Severity::error, vectorElem_,
                     detector_.name() + " is outside 1 to 12" + ends);
    }
}

void ConfigurationCheck::tellTooFew(std::string_view message) {
    const long spaces = teller_.inGroup("EQ701");
    const long pieces = teller_.inGroup("EQ702");
    std::string causes;
    if (spaces != 0) {
        causes += std::to_string(spaces) + (spaces == 1 ? " further space" : " further spaces");
    }
    if (pieces != 0) {
        causes +=
            (causes.empty() ? "" : " and ") + std::to_string(pieces) +
            (pieces == 1 ? " value that is no plain number" : " values that are no plain numbers");
    }
    teller_.endGroup();
    teller_.tell("EQ703", Severity::error, vectorElem_,
                 std::string(message) + ": the run ends here with status 255" +
                     (causes.empty() ? "" : "; probably because of " + causes));
}

}  // namespace lint
