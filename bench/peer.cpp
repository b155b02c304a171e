// Does eqconvert's whole job for well-formed files in UTF-8, as a user would put it together from
// the fastest XML parsers and std::from_chars: the same record, the same progress messages. It
// shares no code with eqconvert, so that bench/compare.py has something to hold it against.
// usage: peer_rapidxml|peer_pugixml FILE...
//
// Both programs are this file; PEER_PUGIXML chooses the parser. Whatever is no plain parameter file
// ends it with a message and status 255.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#ifdef PEER_PUGIXML
#include <pugixml.hpp>
#else
#include <rapidxml/rapidxml.hpp>
#endif

namespace {

#ifdef PEER_PUGIXML

/// Parses in place, with no more of pugixml's work than references and CDATA need.
class Parser {
  public:
    using Node = pugi::xml_node;

    /// Returns the root element. `text` holds `size` bytes, is written into and has to stay.
    Node parse(char* text, std::size_t size) {
        constexpr unsigned options =
            pugi::parse_escapes | pugi::parse_cdata | pugi::parse_embed_pcdata;
        const pugi::xml_parse_result result =
            document_.load_buffer_inplace(text, size, options, pugi::encoding_utf8);
        if (!result) {
            throw std::runtime_error(result.description());
        }
        return document_.document_element();
    }

    static Node child(Node node, std::string_view name) { return node.child(name.data()); }
    static Node next(Node node) { return node.next_sibling(); }
    static Node next(Node node, std::string_view name) { return node.next_sibling(name.data()); }
    static std::string_view nameOf(Node node) { return node.name(); }
    static std::string_view textOf(Node node) { return node.child_value(); }
    static std::string_view attribute(Node node, std::string_view name) {
        return node.attribute(name.data()).value();
    }

  private:
    pugi::xml_document document_;
};

#else

/// Parses in place, without nodes for text: an element's own value is all that is read.
class Parser {
  public:
    using Node = const rapidxml::xml_node<>*;

    /// Returns the root element. `text` holds `size` bytes and a NUL, is written into and has to
    /// stay.
    Node parse(char* text, std::size_t) {
        document_.clear();
        document_.parse<rapidxml::parse_no_data_nodes>(text);
        return document_.first_node();
    }

    static Node child(Node node, std::string_view name) {
        return node->first_node(name.data(), name.size());
    }
    static Node next(Node node) { return node->next_sibling(); }
    static Node next(Node node, std::string_view name) {
        return node->next_sibling(name.data(), name.size());
    }
    static std::string_view nameOf(Node node) { return {node->name(), node->name_size()}; }
    static std::string_view textOf(Node node) { return {node->value(), node->value_size()}; }
    static std::string_view attribute(Node node, std::string_view name) {
        const auto* const found = node->first_attribute(name.data(), name.size());
        return found == nullptr ? std::string_view()
                                : std::string_view(found->value(), found->value_size());
    }

  private:
    rapidxml::xml_document<> document_;
};

#endif

using Node = Parser::Node;

constexpr std::size_t detectorCount = 12;
constexpr std::array<std::string_view, 4> kindNames{"COEFF_A1", "COEFF_A2", "COEFF_ZS", "COEFF_D"};

void writeAll(int descriptor, const char* data, std::size_t size) {
    while (size > 0) {
        const ssize_t written = ::write(descriptor, data, size);
        if (written < 0) {
            throw std::system_error(errno, std::generic_category(), "write");
        }
        data += written;
        size -= static_cast<std::size_t>(written);
    }
}

/// The record on standard output, through one large buffer.
class Record {
  public:
    void bytes(const void* data, std::size_t size) {
        if (size > buffer_.size() - used_) {
            flush();
        }
        if (size > buffer_.size()) {
            writeAll(STDOUT_FILENO, static_cast<const char*>(data), size);
            return;
        }
        std::memcpy(buffer_.data() + used_, data, size);
        used_ += size;
    }
    void text(std::string_view text) { bytes(text.data(), text.size()); }
    template <class T>
    void raw(T value) {
        bytes(&value, sizeof value);
    }
    /// A decimal number, filled up to two characters.
    void number(std::size_t number, char fill) {
        if (number < 10) {
            raw(fill);
        }
        text(std::to_string(number));
    }
    void flush() {
        writeAll(STDOUT_FILENO, buffer_.data(), used_);
        used_ = 0;
    }

  private:
    std::array<char, std::size_t{1} << 18> buffer_;
    std::size_t used_ = 0;
};

/// Reads whole files into one block, which is kept from file to file.
class FileText {
  public:
    /// Reads `path`; data() has size() bytes and a NUL.
    void read(const char* path) {
        const int file = ::open(path, O_RDONLY | O_CLOEXEC);
        struct stat status {};
        if (file < 0 || ::fstat(file, &status) != 0) {
            throw std::system_error(errno, std::generic_category(), path);
        }
        const auto size = static_cast<std::size_t>(status.st_size);
        if (size >= capacity_) {
            text_ = std::make_unique_for_overwrite<char[]>(size + 1);
            capacity_ = size + 1;
        }
        for (size_ = 0; size_ < size;) {
            const ssize_t got = ::read(file, text_.get() + size_, size - size_);
            if (got <= 0) {
                throw std::runtime_error(std::string(path) + ": read failed");
            }
            size_ += static_cast<std::size_t>(got);
        }
        ::close(file);
        text_[size_] = '\0';
    }
    char* data() { return text_.get(); }
    std::size_t size() const { return size_; }

  private:
    std::unique_ptr<char[]> text_;
    std::size_t capacity_ = 0;
    std::size_t size_ = 0;
};

template <class T>
T numberOf(std::string_view text) {
    T value{};
    if (std::from_chars(text.data(), text.data() + text.size(), value).ec != std::errc{}) {
        throw std::runtime_error("not a number: " + std::string(text));
    }
    return value;
}

/// Returns `text`, which has to be a date as the record has it: 2015-06-23T10:00:00.
std::string_view checkedDate(std::string_view text) {
    constexpr std::string_view form = "0000-00-00T00:00:00";
    bool good = text.size() == form.size();
    for (std::size_t i = 0; good && i < form.size(); ++i) {
        good = form[i] == '0' ? text[i] >= '0' && text[i] <= '9' : text[i] == form[i];
    }
    // Position and range of each part.
    constexpr std::array<std::array<int, 4>, 6> parts{{{0, 4, 1902, 2037},
                                                       {5, 2, 1, 12},
                                                       {8, 2, 1, 31},
                                                       {11, 2, 0, 23},
                                                       {14, 2, 0, 59},
                                                       {17, 2, 0, 59}}};
    for (const auto& [start, length, least, most] : parts) {
        const int value = good ? numberOf<int>(text.substr(static_cast<std::size_t>(start),
                                                           static_cast<std::size_t>(length)))
                               : least;
        good = good && value >= least && value <= most;
    }
    if (!good) {
        throw std::runtime_error("not a date: " + std::string(text));
    }
    return text;
}

Node childOf(Node node, std::string_view name) {
    const Node found = Parser::child(node, name);
    if (!found) {
        throw std::runtime_error("missing element " + std::string(name));
    }
    return found;
}

std::string_view fieldOf(Node node, std::string_view name) {
    return Parser::textOf(childOf(node, name));
}

class Peer {
  public:
    explicit Peer(int fileCount) : fileCount_(fileCount) {}

    void convert(const char* path);
    void finish() { record_.flush(); }

  private:
    using Values = std::vector<double>;

    void writePrologue(Node root);
    void convertConfiguration(Node list);
    void readDetector(Node coefficients);
    void readValues(Values& values, std::string_view text, std::size_t pixels);
    void writeVectors();
    void say(std::string_view text) {
        message_ += text;
        writeAll(STDERR_FILENO, message_.data(), message_.size());
        message_.clear();
    }

    int fileCount_;
    Record record_;
    FileText text_;
    Parser parser_;
    std::string message_;
    std::string fileType_;
    int nucTableId_ = 0;
    int bandId_ = 0;
    double epsilon_ = 0;
    std::int16_t maxPixels_ = 0;
    std::array<std::array<Values, detectorCount>, kindNames.size()> lists_;
};

void Peer::convert(const char* path) {
    text_.read(path);
    const Node root = parser_.parse(text_.data(), text_.size());
    const Node data = childOf(root, "DATA");
    bandId_ = numberOf<std::uint8_t>(fieldOf(data, "BAND_ID"));
    epsilon_ = numberOf<double>(fieldOf(data, "EPSILON"));
    const int nucTableId = numberOf<std::int16_t>(fieldOf(data, "NUC_TABLE_ID"));
    if (fileType_.empty()) {
        fileType_ = Parser::nameOf(root);
        nucTableId_ = nucTableId;
        writePrologue(root);
        record_.raw(static_cast<std::int16_t>(nucTableId));
    } else if (Parser::nameOf(root) != fileType_ || nucTableId != nucTableId_) {
        throw std::runtime_error(std::string("mismatch in file ") + path);
    }
    record_.raw(static_cast<std::uint8_t>(bandId_));
    const std::string_view whole = path;
    const std::string_view name = whole.substr(whole.rfind('/') + 1);
    record_.number(name.size(), '0');
    record_.text(name);
    constexpr std::string_view listName = "COEFFICIENTS_LIST";
    std::uint8_t count = 0;
    for (Node list = Parser::child(data, listName); list; list = Parser::next(list, listName)) {
        ++count;
    }
    say("num_tdi_configs=" + std::to_string(count) + "\n");
    record_.raw(count);
    for (Node list = Parser::child(data, listName); list; list = Parser::next(list, listName)) {
        convertConfiguration(list);
    }
}

void Peer::writePrologue(Node root) {
    const Node specific = childOf(root, "SPECIFIC_HEADER");
    record_.text("ZEDA");
    record_.number(fileType_.size() + 1, ' ');
    record_.text("VORN/");
    record_.text(std::string_view(fileType_).substr(4));
    record_.text(checkedDate(fieldOf(childOf(root, "HEADER"), "PRODUCTION_DATE")));
    record_.text(checkedDate(fieldOf(specific, "APPLICABILITY_DATE")));
    record_.text(checkedDate(fieldOf(specific, "APPLICABILITY_END_DATE")));
    record_.number(static_cast<std::size_t>(fileCount_), ' ');
}

void Peer::convertConfiguration(Node list) {
    const std::string_view label = Parser::attribute(list, "tdi_config");
    record_.number(label.size(), '0');
    record_.text(label);
    record_.raw(epsilon_);
    maxPixels_ = 0;
    for (auto& kind : lists_) {
        for (Values& values : kind) {
            values.clear();
        }
    }
    constexpr std::string_view name = "COEFFICIENTS";
    for (Node node = Parser::child(list, name); node; node = Parser::next(node, name)) {
        readDetector(node);
    }
    record_.raw(maxPixels_);
    writeVectors();
}

void Peer::readDetector(Node coefficients) {
    const auto id = numberOf<std::size_t>(Parser::attribute(coefficients, "detector_id"));
    const auto pixels = numberOf<std::int16_t>(fieldOf(coefficients, "NB_OF_PIXELS"));
    maxPixels_ = std::max(maxPixels_, pixels);
    if (id < 1 || id > detectorCount || pixels < 0) {
        throw std::runtime_error("detector or pixels out of range");
    }
    const Node date = childOf(childOf(coefficients, "ON_BOARD_EQUALIZATION"), "APPLICABILITY_DATE");
    for (Node node = Parser::next(date); node; node = Parser::next(node)) {
        const std::string_view name = Parser::nameOf(node);
        const auto* const kind = std::find(kindNames.begin(), kindNames.end(), name);
        if (kind == kindNames.end()) {
            break;
        }
        readValues(lists_[static_cast<std::size_t>(kind - kindNames.begin())][id - 1],
                   Parser::textOf(node), static_cast<std::size_t>(pixels));
        message_ += std::to_string(bandId_);
        message_ += '-';
        message_ += std::to_string(id);
        message_ += ':';
        message_ += std::to_string(pixels);
        message_ += ' ';
        message_ += name;
        say(" values\n");
    }
}

void Peer::readValues(Values& values, std::string_view text, std::size_t pixels) {
    values.reserve(pixels);
    const char* const end = text.data() + text.size();
    for (const char* piece = text.data(); piece != end;) {
        double value = 0;
        const auto [next, error] = std::from_chars(piece, end, value);
        if (error != std::errc{} || (next != end && *next != ' ')) {
            throw std::runtime_error("not a number: " + std::string(piece, end));
        }
        values.push_back(value);
        piece = next == end ? end : next + 1;
    }
    if (values.size() != pixels) {
        throw std::runtime_error("wrong number of values");
    }
}

void Peer::writeVectors() {
    const auto pixels = static_cast<std::size_t>(maxPixels_);
    for (auto& kind : lists_) {
        for (Values& values : kind) {
            values.resize(pixels, std::numeric_limits<double>::quiet_NaN());
            record_.bytes(values.data(), pixels * sizeof(double));
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const auto peer = std::make_unique<Peer>(argc - 1);
        for (int i = 1; i < argc; ++i) {
            peer->convert(argv[i]);
        }
        peer->finish();
        return 0;
    } catch (const std::exception& error) {
        const std::string text = std::string(error.what()) + "\n";
        writeAll(STDERR_FILENO, text.data(), text.size());
        return 255;
    }
}
