#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "converter/CoefficientTable.h"
#include "converter/Messages.h"
#include "converter/ReadListener.h"
#include "record/Sink.h"
#include "record/Writer.h"

/// Converts a run of parameter files, strictly in order, into one record. Keeps from file to file
/// only the first file's type and NUC table identifier.
class Converter {
  public:
    /// Exit status of a run that stopped on an inconsistency.
    static constexpr int stopped = 255;

    /// Nothing is owned; all must outlive the converter. The listener may be null.
    Converter(record::Sink& sink, Messages& messages, ReadListener* listener = nullptr)
        : record_(sink), messages_(messages), listener_(listener) {}

    /// Converts the files and returns the exit status: 0, or `stopped` with a message and an
    /// incomplete record. Throws what `VORN::init` and the sink throw.
    int run(std::span<const char* const> paths);

  private:
    bool convertFile(const char* path, int fileCount);
    bool checkNucTable(std::int16_t id);

    record::Writer record_;
    Messages& messages_;
    ReadListener* listener_;
    CoefficientTable table_;
    std::string fileType_;          ///< root element name of the first file
    std::int16_t nucTableId_ = -1;  ///< of the first file; negative while none is known
};
