#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace lint {

/// What somebody expects of a set of files; what is not given may be anything.
struct Expectation {
    std::optional<long> nucTableId;
    std::optional<std::vector<long>> bands;  ///< of the files, in any order
    std::optional<std::vector<std::string>>
        labels;                                  ///< of each file's configurations, in any order
    std::optional<std::vector<long>> detectors;  ///< of each configuration, in any order
    std::map<long, long> pixels;                 ///< by band, the pixels of each detector
};

/// Reads a JSON object with the members "nuc_table_id", "bands", "labels", "detectors" and "pixels"
/// (an object: the band in decimal, and its number), none of which has to be there. Throws
/// std::runtime_error, with a message that names the file and what is wrong in it where.
Expectation readExpectation(const std::string& path);

}  // namespace lint
