#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "record/Sink.h"
#include "tools/eqrecord/ExportedPart.h"

namespace eqrecord {

/// Holds a record that is being written against the one that it should be: what was exported of
/// a record, byte for byte. Of that, no more is in memory than its headers.
class RecordComparison : public record::Sink {
  public:
    /// Nothing is owned; both must outlive the object. The record must be in the order of this
    /// machine.
    RecordComparison(record::RecordReader& record, const ExportedPart& part);

    /// Throws Inexpressible, with the place, at the first byte that differs.
    void write(std::string_view bytes) override;
    /// Throws Inexpressible when bytes are missing.
    void end();

  private:
    /// Bytes that belong together: those of a text, or else some of the record.
    struct Segment {
        std::string text;
        std::uint64_t offset = 0;
        std::uint64_t length = 0;
        int field = 0;  ///< of a configuration, the first one
        const ExportedFile* file = nullptr;
        const record::Configuration* configuration = nullptr;
    };

    void addPrologue(const ExportedPart& part);
    void addFile(const ExportedFile& file, bool hasNucTable);
    template <class Write>
    void add(int field, const ExportedFile* file, Write write);
    void takeFromRecord();
    std::string_view wanted();
    std::string differingPart() const;

    record::RecordReader& record_;
    std::vector<Segment> segments_;
    std::size_t segment_ = 0;  ///< the one that is being compared
    std::uint64_t done_ = 0;   ///< bytes of it that are the same
};

}  // namespace eqrecord
