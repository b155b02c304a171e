#include "lint/Expectation.h"

#include <cerrno>
#include <charconv>
#include <fstream>
#include <limits>
#include <stdexcept>
#include <system_error>

#include "lint/Json.h"
#include "lint/Printable.h"

namespace lint {

namespace {

/// Where in the document, as a JSON pointer ("/bands/0"), and what is wrong there.
[[noreturn]] void refuse(const std::string& where, const std::string& what) {
    throw std::runtime_error(where + (where.empty() ? "" : ": ") + what);
}

[[noreturn]] void refuseType(const Json& json, const std::string& where, const char* wanted) {
    refuse(where, std::string("must be ") + wanted + ", not " +
                      (json.is_number() ? dumped(json) : json.type_name()));
}

long numberOf(const Json& json, const std::string& where) {
    if (!json.is_number_integer()) {
        refuseType(json, where, "a whole number");
    }
    constexpr auto highest = std::numeric_limits<long>::max();
    if (json.is_number_unsigned() && json.get<unsigned long long>() > highest) {
        refuse(where, "is too large");
    }
    return json.get<long>();
}

std::string textOf(const Json& json, const std::string& where) {
    if (!json.is_string()) {
        refuseType(json, where, "a text");
    }
    return json.get<std::string>();
}

template <class Item>
std::vector<Item> listOf(const Json& json, const std::string& where,
                         Item (*itemOf)(const Json&, const std::string&)) {
    if (!json.is_array()) {
        refuseType(json, where, "a list");
    }
    std::vector<Item> items;
    for (const Json& item : json) {
        items.push_back(itemOf(item, where + '/' + std::to_string(items.size())));
    }
    return items;
}

std::map<long, long> pixelsOf(const Json& json, const std::string& where) {
    if (!json.is_object()) {
        refuseType(json, where, "an object");
    }
    std::map<long, long> pixels;
    for (const auto& [key, value] : json.items()) {
        const std::string here = std::string(where).append("/").append(key);
        long band = 0;
        const char* const end = key.data() + key.size();
        const auto [stop, error] = std::from_chars(key.data(), end, band);
        if (error != std::errc() || stop != end) {
            refuse(here, "must be the number of a band");
        }
        pixels[band] = numberOf(value, here);
    }
    return pixels;
}

Expectation expectationOf(const Json& json) {
    if (!json.is_object()) {
        refuseType(json, "", "an object");
    }
    Expectation expectation;
    for (const auto& [key, value] : json.items()) {
        const std::string where = '/' + key;
        if (key == "nuc_table_id") {
            expectation.nucTableId = numberOf(value, where);
        } else if (key == "bands") {
            expectation.bands = listOf(value, where, numberOf);
        } else if (key == "labels") {
            expectation.labels = listOf(value, where, textOf);
        } else if (key == "detectors") {
            expectation.detectors = listOf(value, where, numberOf);
        } else if (key == "pixels") {
            expectation.pixels = pixelsOf(value, where);
        } else {
            refuse(where, "is unknown; there are nuc_table_id, bands, labels, detectors, pixels");
        }
    }
    return expectation;
}

/// The library's message without its number of the error.
std::string plainMessage(const Json::exception& error) {
    const std::string_view message = error.what();
    const std::size_t start = message.find("] ");
    return std::string(message.substr(start == std::string_view::npos ? 0 : start + 2));
}

}  // namespace

Expectation readExpectation(const std::string& path) {
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    file.peek();  // a folder can be opened, but not read
    if (!file.good() && errno != 0) {
        throw std::runtime_error(printable(path) + ": " + std::generic_category().message(errno));
    }
    try {
        return expectationOf(Json::parse(file));
    } catch (const Json::exception& error) {
        throw std::runtime_error(printable(path + ": " + plainMessage(error)));
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(printable(path + ": " + error.what()));
    }
}

}  // namespace lint
