#pragma once

#include <ostream>

#include "record/RecordReader.h"
#include "tools/eqrecord/ExportedPart.h"

namespace eqrecord {

/// Writes a parameter file in XML, from which the converter makes the file of a record again:
/// with the prologue of the reading, all detectors of the configurations that have pixels, P
/// pixels each, and all bits of each value. The record must be in the order of this machine.
/// Throws Inexpressible when the file holds what no parameter file can.
void writeParameterFile(record::RecordReader& record, const record::Reading& reading,
                        const ExportedFile& file, std::ostream& out);

/// Whether the converter would read the name of an element to its end.
bool isElementName(std::string_view name);

}  // namespace eqrecord
