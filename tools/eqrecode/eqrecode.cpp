// Loads an XML document and saves it, in another encoding when one is named:
//
//     eqrecode [--lossy] IN OUT [ENCODING]
//
// The file is read once, and everything is done in memory: what the document layer makes of it, the
// new bytes, and the proof that nothing is lost on the way (Loss.cpp). Only then the output is
// opened, so that it may be the input, and gets its name when it is whole. With ENCODING the XML
// declaration is rewritten to that name, so that the file reads back.

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "lint/Printable.h"
#include "markup/Markup.h"
#include "tools/companion/Options.h"
#include "tools/companion/OutputFile.h"
#include "tools/companion/Program.h"
#include "tools/eqrecode/Codec.h"
#include "tools/eqrecode/Form.h"
#include "tools/eqrecode/InputFile.h"
#include "tools/eqrecode/Loss.h"
#include "tools/eqrecode/MemoryFile.h"

namespace {

using namespace eqrecode;

constexpr const char* programName = "eqrecode";

constexpr const char* version = "eqrecode " EQCONVERT_VERSION "\n";

constexpr const char* help =
    "Usage: eqrecode [--lossy] IN OUT [ENCODING]\n"
    "\n"
    "Loads the XML file IN, whatever its encoding, says what it found, and saves it as\n"
    "OUT, as it was or in ENCODING with its declaration rewritten. Both may be the same\n"
    "file, and - is standard input or output.\n"
    "\n"
    "What would be written is read back before anything is replaced. When it is not the\n"
    "same text, or without ENCODING not the same bytes, the first character that would\n"
    "be lost is told, and nothing is written.\n"
    "\n"
    "  --lossy                   Write what can be kept, with ? for the rest\n"
    "  --help                    Print this\n"
    "  --version                 Print the version\n"
    "\n"
    "ENCODING is a name that 'iconv -l' lists; UTF-16 is written with its byte-order mark.\n"
    "\n"
    "Status 0: OUT is written; 1: something would be lost, OUT is as it was; 2: trouble.\n"
    "\n"
    "Examples:\n"
    "  eqrecode EQ_B4.xml EQ_B4.xml UTF-8        in place\n"
    "  eqrecode EQ_B4.xml - UTF-16 | less        look at it\n"
    "  eqrecode EQ_B4.xml /dev/null              does it come back as it was?\n";

struct Job {
    std::string in;
    std::string out;
    std::string encoding;  ///< "" for that of the file
    bool isLossy = false;
};

void tell(const std::string& text) {
    companion::say(programName, lint::printable(text));
}

/// What an XML declaration may say, a letter, then letters, digits, ".", "_" and "-", and there is
/// a converter for.
bool isUsable(const std::string& encoding) {
    const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
    const auto isNameByte = [&](char c) {
        return isLetter(c) || (c >= '0' && c <= '9') || c == '.' || c == '_' || c == '-';
    };
    return !encoding.empty() && isLetter(encoding.front()) &&
           std::ranges::all_of(encoding, isNameByte) && isKnown({encoding});
}

/// A file as it is to be written, and what it has lost on the way.
struct Result {
    Form form;
    std::string bytes;
    std::vector<Loss> losses;
};

void add(std::vector<Loss>& losses, std::optional<Loss> loss) {
    if (loss) {
        losses.push_back(*std::move(loss));
    }
}

/// Writes the text of a file again in the form that it has. What comes back byte for byte has lost
/// nothing, whether it is understood or not.
Result asItWas(const std::string& bytes, std::string_view text) {
    const Form form = formOf(bytes);
    Result result{form, encode(text, form), {}};
    if (result.bytes != bytes) {
        add(result.losses, lossOnReading(bytes, form, text, result.bytes));
    }
    return result;
}

/// Writes the text of a file in another encoding.
Result inEncoding(const std::string& bytes, std::string_view text, const std::string& encoding) {
    const Form form = formOf(bytes);
    std::vector<Loss> losses;
    add(losses, lossOnReading(bytes, form, text, encode(text, form)));
    std::string declaring(text);
    declareEncoding(declaring, encoding);
    const Form newForm = formFor(encoding);
    Result result{newForm, encode(declaring, newForm), std::move(losses)};
    if (isKnown(form)) {  // else the bytes are no text that could be compared
        add(result.losses, lossOnWriting(text, declaring, newForm, result.bytes));
    }
    return result;
}

/// Loads the document and tells what was found. That it is not well-formed is no failure here: its
/// text is whole.
Result convert(const Job& job, const std::string& bytes) {
    MarkupDocument document;
    document.Load(MemoryFile(bytes).path());
    if (document.GetFileError() != 0) {
        throw std::runtime_error(document.GetError());
    }
    tell(job.in + ": " + document.GetError());
    return job.encoding.empty() ? asItWas(bytes, document.GetDoc())
                                : inEncoding(bytes, document.GetDoc(), job.encoding);
}

Result readAndConvert(const Job& job) {
    const std::string bytes = readFile(job.in);
    try {
        return convert(job, bytes);
    } catch (const std::runtime_error& error) {  // says what failed, not for which file
        throw std::runtime_error(job.in + ": " + error.what());
    }
}

void write(const std::string& path, const std::string& bytes) {
    companion::OutputFile output(path, true);
    output.stream() << bytes;
    output.commit();
}

int recode(const Job& job) {
    const Result result = readAndConvert(job);
    for (const Loss& loss : result.losses) {
        tell(job.in + loss.place + ": " + loss.what);
    }
    if (!result.losses.empty() && !job.isLossy) {
        tell(job.out + ": not written; --lossy writes what can be kept");
        return companion::somethingFound;
    }
    // Made before, as there may be no memory for it behind.
    const std::string done = lint::printable(job.out + ": " + result.form.encoding + ", " +
                                             std::to_string(result.bytes.size()) + " bytes");
    write(job.out, result.bytes);
    companion::say(programName, done);
    return companion::nothingFound;
}

int runEqrecode(int argc, char** argv) {
    Job job;
    const auto operands =
        companion::readOperands(argc, argv, help, version, {{"--lossy", &job.isLossy}});
    if (!operands) {
        return companion::nothingFound;
    }
    if (operands->size() != 2 && operands->size() != 3) {
        throw companion::UsageError("IN, OUT and perhaps ENCODING have to be given");
    }
    job.in = (*operands)[0];
    job.out = (*operands)[1];
    if (operands->size() == 3) {
        job.encoding = operands->back();
        if (!isUsable(job.encoding)) {
            throw companion::UsageError("there is no encoding " + job.encoding);
        }
    }
    return recode(job);
}

}  // namespace

int main(int argc, char** argv) {
    return companion::runProgram(programName, [&] { return runEqrecode(argc, argv); });
}
