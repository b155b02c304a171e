// Any bytes as the JSON of a record: it is refused, or a record comes of it that is read, dumped
// and built again to the same bytes.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>

#include "record/RecordReader.h"
#include "record/Sink.h"
#include "tests/Require.h"
#include "tools/eqrecord/DumpJson.h"
#include "tools/eqrecord/RecordJson.h"

namespace {

struct Collected : record::Sink {
    void write(std::string_view bytes) override { all += bytes; }
    std::string all;
};

struct Built {
    std::string bytes;
    record::ByteOrder order;
};

std::optional<Built> built(std::string_view json) {
    auto input = eqrecord::JsonInput::ofText(json);
    eqrecord::RecordBuilder builder;
    try {
        eqrecord::readRecordJson(input, builder);
    } catch (const std::runtime_error&) {
        return std::nullopt;
    }
    Collected sink;
    builder.write(sink);
    return Built{sink.all, builder.order()};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto first = built({reinterpret_cast<const char*>(data), size});
    if (!first) {
        return 0;
    }
    auto reader = record::RecordReader::ofBytes(first->bytes, first->order);
    require(reader.outcome().state <= record::State::ambiguous || reader.outcome().ending.isGivenUp,
            "what is built can be read", first->bytes);
    const eqrecord::Selection all;
    for (const record::Reading& reading : reader.outcome().readings) {
        eqrecord::DumpSource source(reader, reading, all);
        std::ostringstream json;
        eqrecord::writeDumpJson(source, {}, json);
        const auto again = built(json.str());
        require(again.has_value(), "what is dumped can be built", json.str());
        require(again->bytes == first->bytes, "the same record comes of it", json.str());
    }
    return 0;
}
