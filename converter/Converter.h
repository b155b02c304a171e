#pragma once

#include <cstdint>
#include <string>

#include "converter/CoefficientTable.h"
#include "converter/Diagnostics.h"
#include "converter/RecordWriter.h"
#include "converter/VORN.h"

/// Converts a run of parameter files, strictly in order, into one record. Keeps from file to file
/// only the first file's type and NUC table identifier.
class Converter {
  public:
    /// Exit status of a run that stopped on an inconsistency.
    static constexpr int stopped = 255;

    /// Both are not owned and must outlive the converter.
    Converter(RecordWriter& record, Diagnostics& diagnostics)
        : record_(record), diagnostics_(diagnostics), header_(record, diagnostics) {}

    /// Converts `fileCount` files and returns the exit status: 0, or `stopped` with a message and
    /// an incomplete record. The record is not flushed. Throws what `VORN::init` and `RecordWriter`
    /// throw.
    int run(int fileCount, const char* const* paths);

  private:
    bool convertFile(int fileCount, const char* path);
    bool checkNucTable(std::int16_t id, const char* path);

    RecordWriter& record_;
    Diagnostics& diagnostics_;
    VORN header_;
    CoefficientTable table_;
    std::string fileType_;          ///< root element name of the first file
    std::int16_t nucTableId_ = -1;  ///< of the first file; negative while none is known
};
