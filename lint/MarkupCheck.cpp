// The tolerant parser tells what it has tolerated, but the document's log keeps only the first of
// it; so where there was something the text is parsed again, with a listener.
//
// What it does not even notice (an entity that nobody has declared, an attribute twice) is found by
// a mainstream parser. In a file as it should be, that need not see the vectors, nearly all of the
// text, of which the checks know that they hold no markup. A file in another encoding is read by it
// twice: as it is, and as the converter has turned it into UTF-8. Only if it sees the same both
// times, the encoding has done no harm.

#include "lint/MarkupCheck.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "lint/XmlReading.h"
#include "markup/ElemParser.h"
#include "markup/ElemPosTree.h"
#include "markup/ResultLog.h"
#include "markup/text/NameCompare.h"

namespace lint {

namespace {

/// What is told of something that the parser tolerates.
struct Tolerance {
    std::string_view result;
    std::string_view rule;
    std::string_view message;  ///< "%" stands for the name of the tag
};

constexpr std::array<Tolerance, 10> tolerances{{
    {ResultUnendedStartTag, "EQ201",
     "start tag % has no end tag: what seems to be in it follows it"},
    {ResultLoneEndTag, "EQ202", "end tag % has no start tag: it is ignored"},
    {ResultFirstTagSyntax, "EQ203", "here begins no tag: it is ignored up to the next one"},
    {ResultExclamationTagSyntax, "EQ203", "here begins no declaration: it is ignored"},
    {ResultDoctypeTagSyntax, "EQ203", "here begins no document type: it is ignored"},
    {ResultCommentTagSyntax, "EQ203", "here begins no comment: it is ignored"},
    {ResultCDataSectionSyntax, "EQ203", "here begins no section: it is ignored"},
    {ResultUnterminatedTagSyntax, "EQ204", "this never ends: the rest of the file is ignored"},
    {ResultRootHasSibling, "EQ205", "elements follow the root element: only the first one is read"},
    {ResultNoRootElement, "EQ206", "there is no element"},
}};

/// Tells what a parse tolerates.
class Tolerated : public ParseListener {
  public:
    Tolerated(Teller& teller, const MarkupDocument& document)
        : teller_(teller), document_(document) {}

    void tolerated(const Result& result) override {
        for (const Tolerance& row : tolerances) {
            if (row.result == result.name) {
                tell(row, result);
            }
        }
    }

  private:
    void tell(const Tolerance& row, const Result& result) {
        std::string message(row.message);
        if (const std::size_t at = message.find('%'); at != std::string::npos) {
            message.replace(at, 1, inQuotes(result.value.view()));
        }
        const int first = document_.record(0).child;
        if (row.rule == "EQ205") {
            teller_.tell(row.rule, Severity::warning, document_.record(first).next,
                         std::move(message));
        } else if (result.number >= 0) {
            teller_.tell(row.rule, Severity::warning, {static_cast<std::size_t>(result.number), 1},
                         0, std::move(message));
        } else {
            teller_.tell(row.rule, Severity::warning, 0, std::move(message));
        }
    }

    Teller& teller_;
    const MarkupDocument& document_;
};

/// Whether a text has a "?" behind its XML declaration.
bool hasQuestionMark(std::string_view text) {
    constexpr std::string_view end = "?>";
    const std::size_t declaration =
        text.starts_with("<?xml") ? text.find(end) : std::string_view::npos;
    const bool hasDeclaration = declaration != std::string_view::npos;
    return text.find('?', hasDeclaration ? declaration + end.size() : 0) != std::string_view::npos;
}

/// The bytes of a file that has been read before; "" when there is no way to read it twice. Throws
/// std::system_error when reading fails.
std::string bytesOf(const char* path) {
    if (!std::filesystem::is_regular_file(path)) {
        return {};
    }
    std::ifstream file(path, std::ios::binary);
    std::string bytes(std::filesystem::file_size(path), '\0');
    if (!file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()))) {
        throw std::system_error(errno, std::generic_category(), path);
    }
    return bytes;
}

}  // namespace

void MarkupCheck::begin(const char* path, const MarkupDocument& document) {
    document_ = &document;
    skipped_.clear();
    isTold_ = false;
    labelsAreTokens_.reset();
    readResults();
    checkTolerated();
    const bool isOfAnotherSize = length_ != std::to_string(document.GetDoc().size());
    if (isUsualText() && (isOfAnotherSize || hasQuestionMark(document.GetDoc()))) {
        // Of bytes that are no UTF-8, which become a "?" or nothing, the load tells nothing.
        const std::string bytes = bytesOf(path);
        isLossy_ = !bytes.empty() && bytes != document.GetDoc();
        firstLost_ = static_cast<std::size_t>(std::ranges::mismatch(bytes, document.GetDoc()).in2 -
                                              document.GetDoc().begin());
    }
    if (!isUsualText()) {
        checkEncoding(path);
    }
}

/// Reads what the load has said.
void MarkupCheck::readResults() {
    hasMark_ = isConverted_ = isLossy_ = false;
    firstLost_ = 0;
    encoding_.clear();
    nulls_.clear();
    const std::string& log = document_->GetResult();
    for (const int start : markup::findResults(log)) {
        const std::string_view name = markup::resultName(log, start);
        hasMark_ |= name == ResultBom;
        isConverted_ |= name == ResultConvertedTo;
        isLossy_ |= name == ResultConversionLoss;
        if (name == ResultRead) {
            encoding_ = markup::resultAttribute(log, start, "encoding");
            length_ = markup::resultAttribute(log, start, "length");
        } else if (name == ResultNullsRemoved) {
            nulls_ = markup::resultAttribute(log, start, "count");
        }
    }
}

bool MarkupCheck::isUtf8() const {
    return encoding_.empty() || markup::foldName(encoding_) == markup::foldName("UTF-8");
}

/// Whether the text is UTF-8 without anything to tell, so that all programs read the same bytes.
bool MarkupCheck::isUsualText() const {
    return isUtf8() && !hasMark_ && !isLossy_ && nulls_.empty();
}

void MarkupCheck::checkEncoding(const char* path) {
    const std::string bytes = bytesOf(path);
    if (!canReadXml() || bytes.empty()) {
        tellEncoding(false, 0);
        return;
    }
    const XmlReading converted = readXmlText(document_->GetDoc());
    const XmlReading original = readXmlFile(bytes);
    const bool isSame =
        original.isWellFormed && converted.isWellFormed && original.digest == converted.digest;
    // What was lost has become a "?".
    const long lost = std::ranges::count(document_->GetDoc(), '?') - std::ranges::count(bytes, '?');
    tellEncoding(isSame, lost);
    if (converted.isWellFormed && !original.isWellFormed) {
        tellContradicted("some programs refuse the file (" + original.reason + ")");
    } else if (converted.isWellFormed && !isSame) {
        tellContradicted("other programs read other characters");
    }
}

/// Tells what other programs make of the encoding, unless it is known that something is wrong.
void MarkupCheck::tellContradicted(const std::string& message) {
    if (!isTold_) {
        teller_.tell("EQ209", Severity::warning, 0, message);
    }
    isTold_ = true;
}

/// Tells what was done to get the text, of which `lost` characters were lost at least.
void MarkupCheck::tellEncoding(bool isHarmless, long lost) {
    const Severity loss = isHarmless ? Severity::note : Severity::warning;
    if (hasMark_) {
        teller_.tell("EQ207", Severity::note, 0, "the file begins with a byte-order mark");
    }
    if (!nulls_.empty()) {
        teller_.tell(
            "EQ207", Severity::note, 0,
            nulls_ + (nulls_ == "1" ? " NUL character is removed" : " NUL characters are removed"));
    }
    if (isConverted_ && !isUtf8() && !hasMark_) {
        teller_.tell("EQ207", Severity::note, 0,
                     "the text is converted from " + inQuotes(encoding_));
    } else if (!isConverted_ && !encoding_.empty() && !document_->GetDoc().empty()) {
        teller_.tell(
            "EQ209", loss, 0,
            "encoding " + inQuotes(encoding_) + " is unknown: the bytes are kept as they are");
        isTold_ |= !isHarmless;
    }
    if (isLossy_ || lost > 0) {
        const Range range{firstLost_, isUtf8() && isLossy_ ? std::size_t{1} : 0};
        const std::string count =
            lost > 1 ? std::to_string(lost) + " characters are" : "a character is";
        teller_.tell(
            "EQ208", loss, range, 0,
            count + " lost in the conversion from " + inQuotes(encoding_) + ", and read as \"?\"");
    }
}

bool MarkupCheck::labelsAreTokens() {
    if (!labelsAreTokens_) {
        // Nothing else of the document is needed, but some element must follow.
        const auto head = static_cast<std::size_t>(document_->record(root()).start);
        const std::array<std::string_view, 2> pieces{document_->GetDoc().substr(0, head), "<x/>"};
        labelsAreTokens_ = readXmlText(pieces).hasTokenLabels;
    }
    return *labelsAreTokens_;
}

void MarkupCheck::checkTolerated() {
    if (document_->IsWellFormed()) {
        return;
    }
    ElemPosTree tree;
    tree.reserve(document_->recordCount());
    tree.restart();
    std::string log;
    Tolerated listener(teller_, *document_);
    ElemParser(tree, log, false, &listener)
        .parseDocument(TokenPos(document_->GetDoc(), document_->GetDocFlags()));
    isTold_ = true;
}

void MarkupCheck::skip(Range markupFree) {
    if (markupFree.length != 0 && isUsualText() &&
        (skipped_.empty() ||
         skipped_.back().offset + skipped_.back().length <= markupFree.offset)) {
        skipped_.push_back(markupFree);
    }
}

void MarkupCheck::end() {
    const std::string_view text = document_->GetDoc();
    std::vector<std::string_view> pieces;
    std::size_t start = 0;
    for (const Range& range : skipped_) {
        pieces.push_back(text.substr(start, range.offset - start));
        start = range.offset + range.length;
    }
    pieces.push_back(text.substr(start));
    const XmlReading reading = readXmlText(pieces);
    if (!reading.isWellFormed) {
        std::size_t offset = reading.offset;
        for (const Range& range : skipped_) {
            offset += range.offset <= offset ? range.length : 0;
        }
        tellIllFormed(reading.reason, offset);
    }
    if (reading.isWellFormed && reading.elements > document_->recordCount() - 1) {
        teller_.tell("EQ707", Severity::warning, root(),
                     "entities of the document type hold elements: they are not read");
    }
    if (reading.hasNamespace) {
        teller_.tell("EQ213", Severity::note, root(),
                     "the elements are in a namespace: their names are read as they are written");
    }
}

void MarkupCheck::tellIllFormed(const std::string& reason, std::size_t offset) {
    const Range range{std::min(offset, document_->GetDoc().size()), 1};
    if (!isTold_) {
        teller_.tell("EQ212", Severity::warning, range, 0,
                     "no well-formed XML (" + reason +
                         "): it is read all the same, other programs refuse the file");
    }
    if (strictXml_) {
        teller_.tell("EQ211", Severity::note, range, 0, "no well-formed XML: " + reason);
    }
}

}  // namespace lint
