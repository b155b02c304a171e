#pragma once

#include <string>
#include <vector>

#include "fuzz/FuzzInput.h"

/// What a parameter file says, each field as text.
struct ParameterFile {
    struct Vector {
        std::string name;
        std::string values;
    };
    struct Detector {
        std::string id;
        std::string pixels;
        std::vector<Vector> vectors;
    };
    struct Configuration {
        std::string label;
        std::vector<Detector> detectors;
    };

    std::string type;
    std::string dates[3];
    std::string band;
    std::string epsilon;
    std::string nucTable;
    std::vector<Configuration> configurations;
};

/// Makes up a file: plausible values where the input is zero, then others.
ParameterFile pickFile(FuzzInput& in);

/// Writes the file as XML that means just that, in one of the many ways that the input chooses.
std::string writeXml(const ParameterFile& file, FuzzInput& in);
