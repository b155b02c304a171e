// Between two number texts a record can be read in one way only, so the search knows places, which
// lie before a number text, and the ways from one to the next: a width of the number text, or the
// end of the file. It goes into the depth with a stack of its own. A place from which no way leads
// to the end is remembered by all that decides about what follows, and not gone through twice. The
// places form a tree by their parents, so a reading is only its last place, and is read once more
// from its first to be described.
//
// The classes of counts are searched one after the other, the strictest first. An undamaged record
// of plain texts is one way without a fork.
//
// When no way leads to the end, all of them are compared by what speaks for them: a number text
// that is one is worth a point, as 2 bytes are one by chance in about 100 of 65536 cases; an
// epsilon that agrees in 8 bytes is worth far more. The last points decide between neighbours: a
// record is rather cut than damaged, and its counts are rather right than not. What is found then
// is never called complete.

#include "record/ReadingSearch.h"

#include <algorithm>
#include <stdexcept>

namespace record {

namespace {

constexpr std::uint64_t prologueStart = 4;     // behind the marker
constexpr std::uint64_t bytesPerPlace = 1024;  // of a name, which cost as much as a place

constexpr int agreementPoints = 8;
constexpr int strangePoints = 3;
constexpr int secondRecordPoints = 8;
constexpr int cutPoints =
    5;  // more than a strange epsilon loses, as there is damage beside every cut
constexpr int countPoints = 3;  // for each class

/// How much an epsilon speaks for what was read up to it. The first one of a file agrees with
/// nothing.
int pointsOf(double epsilon, bool isFirst) {
    if (!isFirst) {
        return agreementPoints;
    }
    return isPlausible(epsilon) ? 0 : -strangePoints;
}

}  // namespace

std::size_t ReadingSearch::Hash::operator()(std::uint32_t index) const {
    const Place& place = (*places)[index];
    std::uint64_t hash = place.offset;
    const std::uint64_t small = std::uint64_t{place.configurations} << 17 |
                                std::uint64_t{place.counted} << 9 |
                                (place.isNucNegative ? 1U << 8 : 0U) | place.field;
    // A multiplication mixes upward only, the shift brings it down again.
    for (const std::uint64_t value : {place.epsilon, place.fileCount, place.file, small}) {
        hash = (hash ^ value) * 0x9E3779B97F4A7C15;
        hash ^= hash >> 29;
    }
    return static_cast<std::size_t>(hash);
}

/// Two places are the same when all that can follow is: not how they were come to, nor what for.
bool ReadingSearch::Same::operator()(std::uint32_t a, std::uint32_t b) const {
    const auto equal = [&](auto member) { return (*places)[a].*member == (*places)[b].*member; };
    return equal(&Place::offset) && equal(&Place::field) && equal(&Place::file) &&
           equal(&Place::fileCount) && equal(&Place::configurations) && equal(&Place::counted) &&
           equal(&Place::epsilon) && equal(&Place::isNucNegative);
}

Outcome ReadingSearch::run() {
    if (begin()) {
        for (const Counts worst :
             {Counts::kept, Counts::modulo256, Counts::fewer, Counts::fewerThanMore}) {
            if (search(worst)) {
                break;
            }
        }
    }
    return outcome();
}

/// Reads the marker, which is all that some files have to be asked for.
bool ReadingSearch::begin() {
    FieldReader reader(bytes_, order_, 0);
    if (reader.readMarker(1)) {
        return true;
    }
    best_ = {
        0, 1, {}, reader.isAtEnd() && bytes_.size() > 0 ? State::incomplete : State::damaged, 0};
    return false;
}

bool ReadingSearch::search(Counts worst) {
    worst_ = worst;
    price_ += places_.size();
    dead_.clear();
    places_.clear();
    Place first;
    first.offset = prologueStart;
    first.field = 2;
    visit(first);
    while (!steps_.empty() && readings_.size() < maxReadings && !isGivenUp_) {
        tryNext();
    }
    return !readings_.empty() || isGivenUp_;
}

/// Goes to a place, unless it is known to lead nowhere.
void ReadingSearch::visit(const Place& place) {
    const auto index = static_cast<std::uint32_t>(places_.size());
    places_.push_back(place);
    if (dead_.contains(index)) {
        places_.pop_back();
        return;
    }
    isGivenUp_ = places_.size() + price_ > maxPlaces;
    const std::uint8_t firstWay = place.field == 13 ? wayOut : leastWidth;
    steps_.push_back({index, firstWay, readings_.size()});
}

/// Goes back from a place whose ways have all been tried.
void ReadingSearch::leave() {
    if (steps_.back().readingsBefore == readings_.size()) {
        dead_.insert(steps_.back().place);
    }
    steps_.pop_back();
}

/// How the configurations of the place's file compare to their count if it ends there.
Counts ReadingSearch::countsOf(const Place& place) {
    if (place.configurations < place.counted) {
        return Counts::fewer;
    }
    const std::uint32_t more = place.configurations - place.counted;
    if (more % 256 != 0) {
        return Counts::fewerThanMore;
    }
    return more == 0 ? Counts::kept : Counts::modulo256;
}

/// The best that can become of the file's count when this way is taken.
Counts ReadingSearch::countsOf(const Place& place, std::uint8_t way) {
    if (place.field != 13) {
        return Counts::kept;
    }
    if (way == wayOut) {
        return countsOf(place);
    }
    return place.configurations < place.counted ? Counts::kept : Counts::modulo256;
}

void ReadingSearch::tryNext() {
    Step& step = steps_.back();
    if (step.nextWay > greatestWidth) {
        leave();
        return;
    }
    const Branch branch{step.place, step.nextWay};
    step.nextWay = branch.way == wayOut ? leastWidth : static_cast<std::uint8_t>(branch.way + 1);
    const Place place = places_[branch.place];
    if (countsOf(place, branch.way) > worst_) {
        return;
    }
    if (branch.way == wayOut && place.file + 1 == place.fileCount) {
        considerEnd(place, branch);
        return;
    }
    FieldReader reader(bytes_, order_, place.offset);
    Values values;
    Place next = place;
    const bool isFree = follow(next, branch.way, reader, values);
    // Searching long names again and again would take long without coming to many places.
    price_ += reader.searched() / bytesPerPlace;
    if (isFree) {
        next.parent = branch.place;
        next.evidence += 1;
        next.way = branch.way;
        visit(next);
    } else {
        const long points = next.evidence - place.evidence + (reader.isAtEnd() ? cutPoints : 0);
        const State state = reader.isAtEnd() ? State::incomplete : State::damaged;
        considerCandidate(place, {points, reader.obstacle(), branch, state, reader.offset()});
    }
}

bool ReadingSearch::follow(Place& place, std::uint8_t way, FieldReader& reader,
                           Values& values) const {
    bool isFree = false;
    if (place.field == 2) {
        isFree = readPrologue(way, reader, values);
        place.field = 7;
    } else if (place.field == 7) {
        isFree = reader.readNumber(7, way, values.number, 1);
        place.fileCount = values.number;
        isFree = isFree && readFileStart(place, true, reader, values);
    } else if (place.field == 10) {
        isFree = reader.readNumber(10, way, values.number) &&
                 reader.readTextWithout({"/\0", 2}, 11, values.number, values.text) &&
                 reader.readByte(12, place.counted);
        place.field = 13;
    } else if (way == wayOut) {
        place.counts = std::max(place.counts, countsOf(place));
        place.configurations = 0;
        place.epsilon = 0;
        place.counted = 0;
        ++place.file;
        isFree = readFileStart(place, place.isNucNegative, reader, values);
    } else {
        isFree = readConfiguration(place, way, reader, values);
    }
    place.offset = reader.offset();
    return isFree;
}

bool ReadingSearch::readPrologue(std::uint8_t width, FieldReader& reader, Values& values) {
    return reader.readNumber(2, width, values.number) &&
           reader.readText(3, values.number, fileTypePrefix, values.text) &&
           reader.readDate(4, values.dates[0]) && reader.readDate(5, values.dates[1]) &&
           reader.readDate(6, values.dates[2]);
}

/// Reads fields 8, if it is to be there, and 9.
bool ReadingSearch::readFileStart(Place& next, bool hasNucTable, FieldReader& reader,
                                  Values& values) {
    values.fileOffset = reader.offset();
    next.field = 10;
    if (hasNucTable) {
        std::int16_t id = 0;
        if (!reader.readInt16(8, id)) {
            return false;
        }
        values.nucTableId = id;
        next.isNucNegative = id < 0;
    }
    return reader.readByte(9, values.band);
}

bool ReadingSearch::readConfiguration(Place& next, std::uint8_t width, FieldReader& reader,
                                      Values& values) const {
    const std::string_view forbidden("\0", takesNul_ ? 0 : 1);
    Configuration& read = values.configuration;
    const bool isFirst = next.configurations == 0;
    read.offset = reader.offset();
    if (!reader.readNumber(13, width, values.number) ||
        !reader.readTextWithout(forbidden, 14, values.number, values.text) ||
        !reader.readReal(15, isFirst ? std::nullopt : std::optional(next.epsilon),
                         read.epsilonBits)) {
        return false;
    }
    next.epsilon = read.epsilonBits;
    next.evidence += pointsOf(read.epsilon(), isFirst);
    if (!reader.readCount(16, read.pixels)) {
        return false;
    }
    read.vectorsOffset = reader.offset();
    ++next.configurations;
    return reader.skipVectors(17, read.pixels);
}

/// Takes the end of the last file for a reading, or for a candidate when there are bytes behind it.
/// Of a file with fewer blocks than counted the latter needs a second record: otherwise each
/// configuration that is damaged would be bytes behind the end of the one before.
void ReadingSearch::considerEnd(const Place& place, Branch branch) {
    if (place.offset == bytes_.size()) {
        readings_.push_back(branch);
        return;
    }
    const bool isSecond = bytes_.view(place.offset, marker.size()) == marker;
    if (isSecond || countsOf(place) <= Counts::modulo256) {
        const long points = cutPoints + (isSecond ? secondRecordPoints : 0);
        considerCandidate(place, {points, static_cast<int>(fields.size()) + 1, branch,
                                  State::trailing, place.offset});
    }
}

void ReadingSearch::considerCandidate(const Place& place, Candidate candidate) {
    const Counts counts = std::max(place.counts, countsOf(place, candidate.branch.way));
    candidate.evidence += place.evidence - countPoints * static_cast<int>(counts);
    if (place.field == 13 && candidate.branch.way != wayOut &&
        countsOf(place) <= Counts::modulo256) {
        candidate.evidence -= 1;  // the count would allow to end here
    }
    const bool isBetter = candidate.evidence != best_.evidence ? candidate.evidence > best_.evidence
                                                               : candidate.field > best_.field;
    // Places of a pass are gone with the next; the last pass comes to all that those before did.
    if (worst_ == Counts::fewerThanMore && isBetter) {
        best_ = candidate;
    }
}

Outcome ReadingSearch::outcome() {
    Outcome result;
    result.order = order_;
    for (const Branch& branch : readings_) {
        result.readings.push_back(readingOf(branch, nullptr));
    }
    if (readings_.size() > 1) {
        result.state = State::ambiguous;
    } else if (isGivenUp_) {
        result.readings.clear();  // there may be another one
        result.ending.isGivenUp = true;
        result.ending.available = bytes_.size();
    } else if (readings_.size() == 1) {
        result.state = result.readings[0].isShort() ? State::fewerBlocks : State::complete;
    } else {
        result.state = best_.state;
        result.ending.field = best_.field;
        result.ending.offset = best_.offset;
        result.ending.available = bytes_.size() - best_.offset;
        const bool isMarker = best_.field == 1;
        Reading reading = isMarker ? Reading() : readingOf(best_.branch, &result.ending);
        if (best_.state != State::damaged) {
            result.readings.push_back(std::move(reading));
        }
    }
    return result;
}

/// Reads once more what leads to the branch. Without an ending the branch is the end of the last
/// file; with one, what is whole behind its place is read too.
Reading ReadingSearch::readingOf(Branch branch, Ending* ending) {
    std::vector<std::uint32_t> chain;
    for (std::uint32_t index = branch.place; index != 0; index = places_[index].parent) {
        chain.push_back(index);
    }
    Reading reading;
    Place from = places_[0];
    for (auto index = chain.rbegin(); index != chain.rend(); ++index) {
        const Place& to = places_[*index];
        FieldReader reader(bytes_, order_, from.offset);
        Values values;
        // What could be read before can be read again, unless somebody writes to the file.
        if (Place next = from; !follow(next, to.way, reader, values)) {
            throw std::runtime_error(bytes_.path() + ": has changed while it was read");
        }
        append(from, values, to, reading);
        from = to;
    }
    reading.end = from.offset;
    reading.counts = from.counts;
    const bool isEnd = branch.way == wayOut && from.file + 1 == from.fileCount;
    if (isEnd) {
        reading.counts = std::max(from.counts, countsOf(from));
    }
    if (ending != nullptr && isEnd) {
        ending->field = 0;
        ending->isSecondRecord = bytes_.view(from.offset, marker.size()) == marker;
    } else if (ending != nullptr) {
        FieldReader reader(bytes_, order_, from.offset);
        Values values;
        Place next = from;
        follow(next, branch.way, reader, values);
        describe(from, reader, values, reading, *ending);
        ending->file += branch.way == wayOut ? 1 : 0;
    }
    return reading;
}

/// Adds what lies between two places.
void ReadingSearch::append(const Place& from, const Values& values, const Place& to,
                           Reading& reading) {
    if (from.field == 2) {
        reading.fileType = textOf(values.text);
        reading.creationDate = textOf(values.dates[0]);
        reading.applicabilityStart = textOf(values.dates[1]);
        reading.applicabilityEnd = textOf(values.dates[2]);
    } else if (from.field == 10) {
        reading.files.back().name = textOf(values.text);
        reading.files.back().counted = to.counted;
    } else if (to.field == 10) {
        reading.filesCounted = to.fileCount;
        reading.files.push_back({values.fileOffset, values.nucTableId, values.band, {}, 0, {}});
    } else if (from.field == 13) {
        reading.files.back().configurations.push_back(values.configuration);
        reading.files.back().configurations.back().label = textOf(values.text);
    }
}

/// Describes what is whole between a place and an obstacle.
void ReadingSearch::describe(const Place& place, const FieldReader& reader, const Values& values,
                             Reading& reading, Ending& ending) {
    const int obstacle = reader.obstacle();
    if (place.field == 2) {
        append(place, values, place, reading);
        return;
    }
    if (place.field == 7) {
        reading.filesCounted = obstacle > 7 ? values.number : 0;
        ending.file = obstacle > 7 ? 1 : 0;
        return;
    }
    ending.file = static_cast<std::size_t>(place.file) + 1;
    if (place.field == 10) {
        reading.files.pop_back();  // its name is not whole
    } else if (obstacle >= 13) {
        ending.configuration = std::size_t{place.configurations} + 1;
        if (obstacle > 14) {
            ending.partial = values.configuration;
            ending.partial->label = textOf(values.text);
        }
        if (obstacle == 17 && values.configuration.pixels > 0) {
            ending.wholeVectors =
                static_cast<std::size_t>(ending.available / values.configuration.vectorLength());
        }
    }
}

std::string ReadingSearch::textOf(const TextPlace& text) {
    std::string result(static_cast<std::size_t>(text.length), '\0');
    bytes_.read(text.offset, result.data(), result.size());
    return result;
}

}  // namespace record
