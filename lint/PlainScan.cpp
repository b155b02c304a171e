// Clean files are mostly vectors, and all that is asked of those is whether they are plain. So the
// grammar of plain numbers is a table of states, one look-up for each byte, for four parts of the
// text at once; what it refuses is looked at piece by piece by others.

#include "lint/PlainScan.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace lint {

namespace {

/// What has been read of a number.
enum State : std::uint8_t {
    refused,
    start,     ///< nothing
    sign,      ///< its sign
    whole,     ///< digits
    point,     ///< a point without digits before it
    fraction,  ///< a point and a digit on either side of it
    mark,      ///< the "e"
    markSign,  ///< the sign of the exponent
    exponent,  ///< digits of the exponent
    stateCount
};

using Row = std::array<State, 256>;

constexpr std::array<Row, stateCount> makeTable() {
    std::array<Row, stateCount> next{};  // everything is refused
    for (unsigned char digit = '0'; digit <= '9'; ++digit) {
        next[start][digit] = next[sign][digit] = next[whole][digit] = whole;
        next[point][digit] = next[fraction][digit] = fraction;
        next[mark][digit] = next[markSign][digit] = next[exponent][digit] = exponent;
    }
    next[start]['+'] = next[start]['-'] = sign;
    next[mark]['+'] = next[mark]['-'] = markSign;
    next[start]['.'] = next[sign]['.'] = point;
    next[whole]['.'] = fraction;
    for (const State number : {whole, fraction, exponent}) {
        next[number][' '] = start;
    }
    for (const State number : {whole, fraction}) {
        next[number]['e'] = next[number]['E'] = mark;
    }
    return next;
}

constexpr std::array<Row, stateCount> table = makeTable();

State after(State state, char c) {
    return table[state][static_cast<unsigned char>(c)];
}

bool endsNumber(State state) {
    return state == whole || state == fraction || state == exponent;
}

bool isPlain(std::string_view text) {
    State state = start;
    for (const char c : text) {
        state = after(state, c);
    }
    return endsNumber(state);
}

/// Each look-up has to wait for the one before it; those of several parts of a text don't.
constexpr std::size_t laneCount = 4;
using Lanes = std::array<std::string_view, laneCount>;

/// Cuts a text at spaces into parts of about the same length; false when it has none in the way.
bool cut(std::string_view text, Lanes& lanes) {
    for (std::size_t i = 0; i + 1 < laneCount; ++i) {
        const std::size_t end = text.find(' ', text.size() / (laneCount - i));
        if (end == std::string_view::npos) {
            return false;
        }
        lanes[i] = text.substr(0, end);
        text.remove_prefix(end + 1);
    }
    lanes.back() = text;
    return true;
}

}  // namespace

bool isPlainVector(std::string_view text) {
    Lanes lanes;
    if (text.empty() || !cut(text, lanes)) {
        return text.empty() || isPlain(text);
    }
    const std::size_t common = std::ranges::min(lanes, {}, &std::string_view::size).size();
    std::array<State, laneCount> states;
    states.fill(start);
    for (std::size_t i = 0; i < common; ++i) {
        for (std::size_t lane = 0; lane < laneCount; ++lane) {
            states[lane] = after(states[lane], lanes[lane][i]);
        }
    }
    for (std::size_t lane = 0; lane < laneCount; ++lane) {
        for (const char c : lanes[lane].substr(common)) {
            states[lane] = after(states[lane], c);
        }
    }
    return std::ranges::all_of(states, endsNumber);
}

}  // namespace lint
