#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_set>
#include <vector>

#include "record/ByteSource.h"
#include "record/FieldReader.h"
#include "record/Reading.h"

namespace record {

/// Looks for the reading of a record in one byte order. Number texts have no end mark and counts
/// can't be trusted, so there are several ways to go on at each; the right one is that which comes
/// to the end of the record at its last byte.
class ReadingSearch {
  public:
    /// So many places are tried, and so many readings kept.
    static constexpr std::size_t maxPlaces = 1'000'000;
    static constexpr std::size_t maxReadings = 8;

    /// The bytes are not owned. `takesNul` is whether a label may hold a NUL.
    ReadingSearch(ByteSource& bytes, ByteOrder order, bool takesNul)
        : bytes_(bytes), order_(order), takesNul_(takesNul) {}
    ReadingSearch(const ReadingSearch&) = delete;
    ReadingSearch& operator=(const ReadingSearch&) = delete;

    /// Finds all readings of the best class, or else where the best of the others ends.
    Outcome run();
    /// How much speaks for the outcome when the record is not complete; the greater the better.
    long evidence() const { return best_.evidence; }

  private:
    /// A place where there are several ways to go on: before a number text, which is field 2, 7, 10
    /// or 13. The last is also where a file may end.
    struct Place {
        std::uint64_t offset = 0;
        std::uint64_t epsilon = 0;         ///< of the file's first configuration
        std::uint64_t fileCount = 0;       ///< field 7
        std::uint64_t file = 0;            ///< number of the file, from 0
        std::uint32_t configurations = 0;  ///< that were read of the file
        std::uint32_t parent = 0;          ///< the place before
        std::int32_t evidence = 0;         ///< how much speaks for what was read up to here
        Counts counts = Counts::kept;      ///< the worst of the files before this one
        std::uint8_t way = 0;              ///< how it was come to from the place before
        std::uint8_t field = 0;
        std::uint8_t counted = 0;    ///< field 12 of the file
        bool isNucNegative = false;  ///< the last field 8 was negative
    };

    /// What is read between two places; what is not is 0.
    struct Values {
        std::uint64_t number = 0;
        TextPlace text;
        TextPlace dates[3];
        std::uint64_t fileOffset = 0;
        std::optional<std::int16_t> nucTableId;
        std::uint8_t band = 0;
        Configuration configuration;
    };

    /// A place on the way that is being tried, and which way from there is the next.
    struct Step {
        std::uint32_t place;
        std::uint8_t nextWay;
        std::size_t readingsBefore;
    };

    /// A place and the way from there.
    struct Branch {
        std::uint32_t place = 0;
        std::uint8_t way = 0;
    };

    /// Where the reading that most speaks for comes to an end, if none is complete.
    struct Candidate {
        long evidence = -1;
        int field = -1;  ///< decides between two of the same evidence
        Branch branch;
        State state = State::damaged;
        std::uint64_t offset = 0;
    };

    struct Hash {
        const std::vector<Place>* places;
        std::size_t operator()(std::uint32_t index) const;
    };
    struct Same {
        const std::vector<Place>* places;
        bool operator()(std::uint32_t a, std::uint32_t b) const;
    };

    static constexpr std::uint8_t wayOut = 0;  ///< the file ends here
    /// The other ways are the widths of a number text.
    static constexpr std::uint8_t leastWidth = numberWidth, greatestWidth = 9;

    bool begin();
    bool search(Counts worst);
    void tryNext();
    void visit(const Place& place);
    void leave();
    static Counts countsOf(const Place& place);
    static Counts countsOf(const Place& place, std::uint8_t way);

    /// Goes on from a place, which becomes the next one, as far as the way is free; the reader says
    /// why it isn't.
    bool follow(Place& place, std::uint8_t way, FieldReader& reader, Values& values) const;
    static bool readPrologue(std::uint8_t width, FieldReader& reader, Values& values);
    static bool readFileStart(Place& next, bool hasNucTable, FieldReader& reader, Values& values);
    bool readConfiguration(Place& next, std::uint8_t width, FieldReader& reader,
                           Values& values) const;

    void considerEnd(const Place& place, Branch branch);
    void considerCandidate(const Place& place, Candidate candidate);

    Outcome outcome();
    Reading readingOf(Branch branch, Ending* ending);
    void append(const Place& from, const Values& values, const Place& to, Reading& reading);
    void describe(const Place& place, const FieldReader& reader, const Values& values,
                  Reading& reading, Ending& ending);
    std::string textOf(const TextPlace& text);

    ByteSource& bytes_;
    ByteOrder order_;
    bool takesNul_;
    Counts worst_ = Counts::kept;
    std::vector<Place> places_;
    std::vector<Step> steps_;
    std::vector<Branch> readings_;
    std::unordered_set<std::uint32_t, Hash, Same> dead_{0, Hash{&places_}, Same{&places_}};
    /// What was done for classes that are through, and to search names; in places.
    std::uint64_t price_ = 0;
    bool isGivenUp_ = false;
    Candidate best_;
};

}  // namespace record
