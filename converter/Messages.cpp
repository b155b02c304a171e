// A message is put together in a string whose memory is kept, and handed over whole: the usual ones
// take no memory, and none is ever seen in parts. Text and order of each is what those who watch
// the runs have scripts for; also where a message has no line end, and the next one follows on the
// same line.

#include "converter/Messages.h"

#include <array>
#include <charconv>
#include <concepts>
#include <limits>

#include "record/Layout.h"

namespace {

constexpr std::string_view inFile = " in file ";
constexpr std::string_view noMemory = "out of memory";

void append(std::string& line, std::string_view text) {
    line += text;
}

template <std::integral Number>
void append(std::string& line, Number number) {
    std::array<char, std::numeric_limits<Number>::digits10 + 2> digits;
    line.append(digits.data(),
                std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
}

}  // namespace

Messages::Messages(MessageSink& sink, std::size_t longestPath) : sink_(sink) {
    line_.reserve(noMemory.size() + inFile.size() + longestPath + 1);
}

/// The parts, texts and decimal integers, one after another.
template <class... Parts>
std::string_view Messages::line(const Parts&... parts) {
    line_.clear();
    (append(line_, parts), ...);
    return line_;
}

template <class... Parts>
void Messages::say(const Parts&... parts) {
    sink_.say(line(parts...));
}

template <class... Parts>
bool Messages::end(const Parts&... parts) {
    return sink_.end(line(parts...));
}

void Messages::configurations(std::uint8_t count) {
    say("num_tdi_configs=", count, "\n");
}

void Messages::vector(std::uint8_t band, int detector, std::int16_t pixels, std::string_view name) {
    say(band, "-", detector, ":", pixels, " ", name, " values\n");
}

void Messages::fileTypeMismatch(std::string_view name) {
    say("file type table mismatch (", name, ")", inFile, path_, "\n");
}

void Messages::creationTimeInvalid(std::string_view text) {
    say("creation time is invalid: ", text);
}

void Messages::startTimeInvalid(std::string_view text) {
    say("application start time is invalid: ", text);
}

void Messages::stopTimeInvalid(std::string_view text) {
    say("application stop time is invalid: ", text);
}

bool Messages::nucTableMismatch(std::int16_t id) {
    return end("NUC table mismatch (", id, ")", inFile, path_, "\n");
}

bool Messages::vectorLength(long count, std::string_view name, std::int16_t pixels, int detector) {
    return end("Found ", count, " ", name, " pixels instead of ", pixels, " for detector ",
               detector, "\n");
}

bool Messages::detectorOutside(int detector) {
    return end("detector ", detector, " is outside 1 to ", record::detectorCount, inFile, path_,
               "\n");
}

bool Messages::pixelsOutside(long pixels, int detector) {
    return end("NB_OF_PIXELS ", pixels, " of detector ", detector, " is above ",
               std::numeric_limits<std::int16_t>::max(), inFile, path_, "\n");
}

void Messages::cannotWrite(std::string_view reason) {
    say("cannot write the record: ", reason, "\n");
}

void Messages::outOfMemory() {
    say(noMemory, inFile, path_, "\n");
}
