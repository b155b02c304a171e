#include "lint/XmlReading.h"

#ifdef EQCONVERT_EXPAT

#include <expat.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <memory>
#include <new>
#include <numeric>
#include <type_traits>
#include <utility>

#include "markup/text/EncodingNameTable.h"
#include "markup/text/IConv.h"

namespace lint {

namespace {

// Between the name space of an element and its name.
constexpr XML_Char separator = '}';

/// Reads with the parser, for what of it is to be known.
class XmlReader {
  public:
    /// `encoding` is that of the bytes, whatever they declare; null leaves it to them.
    explicit XmlReader(const char* encoding) : parser_(XML_ParserCreateNS(encoding, separator)) {
        if (parser_ == nullptr) {
            throw std::bad_alloc();
        }
        XML_SetUserData(parser_.get(), this);
        XML_SetReturnNSTriplet(parser_.get(), 1);
        XML_SetElementHandler(parser_.get(), startElement, nullptr);
        XML_SetAttlistDeclHandler(parser_.get(), attributeDeclaration);
        XML_SetSkippedEntityHandler(parser_.get(), skippedEntity);
        XML_SetExternalEntityRefHandler(parser_.get(), externalEntity);
        XML_SetExternalEntityRefHandlerArg(parser_.get(), this);
        XML_SetUnknownEncodingHandler(parser_.get(), unknownEncoding, this);
    }

    /// From here on all that is read goes into the digest.
    void beginDigest() {
        XML_SetCharacterDataHandler(parser_.get(), characterData);
        hasDigest_ = true;
    }

    void read(std::string_view bytes) {
        // For each piece that it is given the parser moves what it remembers of the one before.
        const bool isSmall = pending_.size() + bytes.size() <= usualPiece;
        if (!isSmall) {
            parse(std::exchange(pending_, {}));
        }
        if (isSmall || bytes.size() < usualPiece) {
            pending_ += bytes;
        } else {
            parse(bytes);
        }
    }

    XmlReading finish() {
        parse(std::exchange(pending_, {}));
        if (isReading()) {
            note(XML_Parse(parser_.get(), "", 0, XML_TRUE));
        }
        return reading_;
    }

  private:
    struct Deleter {
        void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
    };

    static constexpr std::size_t usualPiece = std::size_t{1} << 16;
    static constexpr std::size_t longestPiece = std::size_t{1} << 20;

    bool isReading() const { return reading_.isWellFormed; }

    void parse(std::string_view bytes) {
        while (isReading() && !bytes.empty()) {
            const std::string_view piece = bytes.substr(0, longestPiece);
            note(XML_Parse(parser_.get(), piece.data(), static_cast<int>(piece.size()), XML_FALSE));
            bytes.remove_prefix(piece.size());
        }
    }

    void note(XML_Status status) {
        const XML_Error error = XML_GetErrorCode(parser_.get());
        if (hasNoMemory_ || error == XML_ERROR_NO_MEMORY) {
            throw std::bad_alloc();
        }
        if (status != XML_STATUS_OK && isReading()) {
            reading_.isWellFormed = false;
            reading_.reason = isUndefined_ ? "undefined entity" : XML_ErrorString(error);
            reading_.offset = static_cast<std::size_t>(
                std::max<XML_Index>(XML_GetCurrentByteIndex(parser_.get()), 0));
        }
    }

    /// FNV-1a.
    void digest(std::string_view text) {
        for (const char c : text) {
            reading_.digest = (reading_.digest ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
        }
    }

    static XmlReader& self(void* data) { return *static_cast<XmlReader*>(data); }

    static void startElement(void* data, const XML_Char* name, const XML_Char** attributes) {
        XmlReader& reader = self(data);
        const std::string_view element(name);
        // "name space}name}prefix", where there is a name space or a prefix. Names may be long.
        if (!reader.reading_.hasNamespace) {
            const void* const last = ::memrchr(name, separator, element.size());
            const auto length = last == nullptr ? 0 : static_cast<const XML_Char*>(last) - name;
            const bool hasPrefix =
                last != nullptr &&
                ::memchr(name, separator, static_cast<std::size_t>(length)) != nullptr;
            const bool isRoot = reader.reading_.elements == 0;
            reader.reading_.hasNamespace = last != nullptr && (isRoot || !hasPrefix);
        }
        ++reader.reading_.elements;
        if (!reader.hasDigest_) {
            return;
        }
        reader.digest("<");
        reader.digest(element);
        for (; *attributes != nullptr; ++attributes) {
            reader.digest(" ");
            reader.digest(*attributes);
        }
    }

    static void attributeDeclaration(void* data, const XML_Char* element, const XML_Char* attribute,
                                     const XML_Char* type, const XML_Char* /*usual*/,
                                     int /*isRequired*/) {
        const bool isLabel = std::string_view(element) == "COEFFICIENTS_LIST" &&
                             std::string_view(attribute) == "tdi_config";
        bool& hasTokens = self(data).reading_.hasTokenLabels;
        hasTokens = hasTokens || (isLabel && std::string_view(type) != "CDATA");
    }

    static void characterData(void* data, const XML_Char* text, int length) {
        self(data).digest({text, static_cast<std::size_t>(length)});
    }

    /// Where a document type lies elsewhere, the parser lets pass what that may declare; nobody
    /// who reads the file can know what it is.
    static void skippedEntity(void* data, const XML_Char* /*name*/, int /*isParameter*/) {
        self(data).isUndefined_ = true;
        XML_StopParser(self(data).parser_.get(), XML_FALSE);
    }

    /// Nor is another file read for a piece of this one.
    static int externalEntity(XML_Parser self, const XML_Char* /*context*/,
                              const XML_Char* /*base*/, const XML_Char* /*systemId*/,
                              const XML_Char* /*publicId*/) {
        // What is handed over is the argument that was set, whatever the type says.
        reinterpret_cast<XmlReader*>(self)->isUndefined_ = true;
        return XML_STATUS_ERROR;
    }

    static int unknownEncoding(void* data, const XML_Char* name, XML_Encoding* info);

    std::unique_ptr<std::remove_pointer_t<XML_Parser>, Deleter> parser_;
    XmlReading reading_;
    std::string pending_;  ///< small pieces that are not parsed yet
    bool hasDigest_ = false;
    // What comes up in the handlers, through which nothing may be thrown.
    bool isUndefined_ = false;
    bool hasNoMemory_ = false;
};

/// What each byte means in an encoding of single bytes, -1 for nothing; false for all others.
bool readBytes(const char* name, std::span<int> meanings) {
    std::array<char, 256> bytes;
    std::iota(bytes.begin(), bytes.end(), '\0');
    std::array<char16_t, 2 * bytes.size()> characters{};
    constexpr std::size_t longestName = 99;
    if (std::string_view(name).size() > longestName) {
        return false;
    }
    IConv converter("UTF-16", name, sizeof(char16_t));
    const std::size_t length =
        converter.run({bytes.data(), bytes.size()},
                      {reinterpret_cast<char*>(characters.data()), sizeof characters});
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const bool isLost = characters[i] == u'?' && bytes[i] != '?';
        meanings[i] = isLost ? -1 : characters[i];
    }
    return converter.error() == 0 && length == bytes.size() * sizeof(char16_t);
}

int XmlReader::unknownEncoding(void* data, const XML_Char* name, XML_Encoding* info) {
    info->data = nullptr;
    info->convert = nullptr;
    info->release = nullptr;
    try {
        // Programs take "latin-1" and "utf_8", too, and UTF-8 by the number of its code page.
        std::string plainName(name);
        std::erase_if(plainName, [](char c) { return c == '-' || c == '_'; });
        if (x_GetEncodingCodePage(name) == CodePageUtf8) {
            plainName = "UTF8";
        }
        const bool isRead = readBytes(name, info->map) || readBytes(plainName.c_str(), info->map);
        return isRead ? XML_STATUS_OK : XML_STATUS_ERROR;
    } catch (const std::bad_alloc&) {
        static_cast<XmlReader*>(data)->hasNoMemory_ = true;
        return XML_STATUS_ERROR;
    }
}

}  // namespace

bool canReadXml() {
    return true;
}

XmlReading readXmlText(std::span<const std::string_view> pieces) {
    XmlReader reader("UTF-8");
    for (const std::string_view piece : pieces) {
        reader.read(piece);
    }
    return reader.finish();
}

XmlReading readXmlText(std::string_view text) {
    XmlReader reader("UTF-8");
    reader.beginDigest();
    reader.read(text);
    return reader.finish();
}

XmlReading readXmlFile(std::string_view bytes) {
    XmlReader reader(nullptr);
    reader.beginDigest();
    reader.read(bytes);
    return reader.finish();
}

}  // namespace lint

#else

namespace lint {

bool canReadXml() {
    return false;
}

XmlReading readXmlText(std::span<const std::string_view> /*pieces*/) {
    return {};
}

XmlReading readXmlText(std::string_view /*text*/) {
    return {};
}

XmlReading readXmlFile(std::string_view /*bytes*/) {
    return {};
}

}  // namespace lint

#endif
