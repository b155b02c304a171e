#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "record/RecordReader.h"
#include "tools/eqrecord/Arguments.h"
#include "tools/eqrecord/OpenRecord.h"
#include "tools/eqrecord/Selection.h"

namespace eqrecord {

/// A file of a record, and those of its configurations that are exported. They belong to the
/// reading.
struct ExportedFile {
    const record::File* file = nullptr;
    std::size_t number = 0;       ///< in the record, from 1
    std::int16_t nucTableId = 0;  ///< also of a file that has no field 8
    std::vector<const record::Configuration*> configurations;

    /// Whether field 12 is the number of all its configurations.
    bool isCounted() const { return file->configurations.size() % 256 == file->counted; }
    double epsilon() const { return configurations.empty() ? 0 : configurations[0]->epsilon(); }
};

/// What is exported of a record.
struct ExportedPart {
    const record::Reading* reading = nullptr;
    std::vector<ExportedFile> files;
    bool isWhole = false;  ///< it is all of the record, and this is neither short nor incomplete
};

/// The selected files and configurations; when configurations are chosen, only files that have one
/// of them. Throws companion::UsageError when nothing is selected, and std::runtime_error when no
/// file of the record is whole.
ExportedPart exportedPart(OpenRecord& record, const Selection& selection);

/// A record can't be expressed in another form. The message names what can't: it is safe for
/// terminals and has no full stop.
class Inexpressible : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// "file 2"
std::string placeOf(const ExportedFile& file);
/// "file 2, configuration 1 "ALL""
std::string placeOf(const ExportedFile& file, const record::Configuration& configuration);
/// "COEFF_A1 of detector 2, pixel 3 of " and the place of the configuration. `index` is that of a
/// value of field 17, from 0.
std::string placeOfValue(const ExportedFile& file, const record::Configuration& configuration,
                         std::size_t index);

}  // namespace eqrecord
