#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "converter/ReadListener.h"
#include "lint/MarkupCheck.h"
#include "lint/SetCheck.h"
#include "lint/Teller.h"
#include "lint/VectorCheck.h"
#include "record/Layout.h"

namespace lint {

/// Looks at the configurations of files, their detectors and vectors.
class ConfigurationCheck {
  public:
    ConfigurationCheck(Teller& teller, SetCheck& set, MarkupCheck& markup)
        : teller_(teller), set_(set), markup_(markup), vectorCheck_(teller) {}

    /// The converter has looked for something from `Configuration` on. A configuration that is not
    /// found ends the file.
    void sought(Sought what, const MarkupDocument& document, int elem);

    /// The run would end with this message, for what was sought last.
    void end(Sought last, std::string_view message);

  private:
    /// What is known of a detector.
    struct Detector {
        int elem = 0;
        int id = 0;
        bool isOutsideTold = false;
        bool hasId = false;
        int pixelElem = 0;
        short pixels = 0;
        std::string writtenPixels{};
        int equalizationElem = 0;
        int vectorParent = 0;  ///< where the vectors are sought
        std::array<bool, record::kindCount> isRead{};
        std::array<bool, record::kindCount> isIgnored{};  ///< told as such

        std::string name() const { return "detector " + std::to_string(id); }
        bool isOutside() const { return id < 1 || id > record::detectorCount; }
    };
    /// What is kept of a detector for its configuration.
    struct Pixels {
        int elem;
        int id;
        short count;
    };

    void beginConfiguration(int elem);
    void endConfiguration();
    void beginDetector(int elem);
    void readDetectorId();
    void endDetector();
    void readPixels(int elem);
    void foundEqualization(int elem);
    void tellLost();
    void foundVectorDate(int elem);
    void foundVector(int elem);
    void readVector(int elem, std::size_t kind);
    void endVectors(int elem);
    void tellMissingKinds();
    void tellFewerPixels(long most);
    void tellTooFew(std::string_view message);
    std::string kindsBehind(int elem);

    Teller& teller_;
    SetCheck& set_;
    MarkupCheck& markup_;
    VectorCheck vectorCheck_;
    const MarkupDocument* document_ = nullptr;
    int configurationElem_ = 0;
    std::string label_;
    std::vector<Pixels> pixels_;  ///< of the detectors of the configuration
    std::array<bool, record::detectorCount + 1> isSeen_{};
    bool hasDetector_ = false;
    Detector detector_;
    int vectorElem_ = 0;  ///< the vector that the converter is about to read
};

}  // namespace lint
