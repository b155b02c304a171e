// A picture shows one configuration. Where only one picture can be made and there are several
// configurations, nobody is given a picture of whichever comes first: they are told what there is.
//
// The output is opened before anything is read: whoever has forgotten --overwrite learns it at
// once. A picture is kept until gnuplot has ended well; only then the output gets its name.

#include "tools/eqrecord/Plot.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <memory>
#include <optional>
#include <stdexcept>

#include "lint/Printable.h"
#include "tools/companion/OutputFile.h"
#include "tools/companion/Program.h"
#include "tools/eqrecord/Gnuplot.h"
#include "tools/eqrecord/OpenRecord.h"
#include "tools/eqrecord/PlotScript.h"
#include "tools/eqrecord/PlotSource.h"
#include "tools/eqrecord/PlotText.h"
#include "tools/eqrecord/Selection.h"
#include "tools/eqrecord/Verb.h"

namespace eqrecord {

namespace {

constexpr const char* footer =
    "A picture shows one configuration: a panel for each kind of coefficient, in which detectors\n"
    "stand side by side. pdf and text show all that are selected, one after the other; svg and\n"
    "png need a selection of one. Pixels without a value are gaps. Where pixels can't be told\n"
    "apart, the least and the greatest of them are shown, never a mean. svg, png and pdf need\n"
    "the program gnuplot (package gnuplot-nox).\n"
    "\n"
    "Status 0: all is shown; 1: the other record lacks a configuration, which is not shown;\n"
    "2: trouble.\n"
    "\n"
    "Examples:\n"
    "  eqrecord plot EQ_B4.record\n"
    "  eqrecord plot --band 4 --configuration ALL -o b4.svg set.record\n"
    "  eqrecord plot --against old.record --outliers -o changes.pdf new.record";

struct PlotArguments {
    Arguments common;
    Selection selection;
    std::string against;
    bool marksOutliers = false;
};

/// The format that is asked for, by its name or by the ending of the output's name.
std::string formatOf(const Arguments& arguments) {
    constexpr std::array<std::pair<std::string_view, const char*>, 7> endings{
        {{".svg", "svg"},
         {".png", "png"},
         {".pdf", "pdf"},
         {".txt", "text"},
         {".gp", "gnuplot"},
         {".plt", "gnuplot"},
         {".gnuplot", "gnuplot"}}};
    if (!arguments.format.empty()) {
        return arguments.format;
    }
    if (arguments.output == "-") {
        return "text";
    }
    for (const auto& [ending, format] : endings) {
        if (arguments.output.ends_with(ending)) {
            return format;
        }
    }
    throw companion::UsageError("-o " + arguments.output +
                                ": its ending tells no format; --format does");
}

/// In characters. COLUMNS is what people set to have it otherwise. Only for what goes to a
/// terminal: a file must not depend on the window that the program happens to run in.
std::size_t terminalWidth() {
    std::size_t width = 0;
    const char* const columns = std::getenv("COLUMNS");
    const std::string_view text = columns != nullptr ? columns : "";
    std::from_chars(text.data(), text.data() + text.size(), width);
    winsize size{};
    if (width == 0 && ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0) {
        width = size.ws_col;
    }
    return width == 0 ? 80 : std::clamp<std::size_t>(width, 40, 1000);
}

/// A text as a shell takes it for one argument.
std::string shellQuoted(const std::string& text) {
    constexpr std::string_view plain =
        "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_-.,:/+=@%";
    if (!text.empty() && text.find_first_not_of(plain) == std::string::npos) {
        return text;
    }
    std::string quoted = "'";
    for (const char c : text) {
        quoted += c == '\'' ? "'\\''" : std::string(1, c);
    }
    return quoted + '\'';
}

/// What to do when one picture was to show all of these: the options that select each.
std::string adviceFor(const std::vector<Block>& blocks) {
    constexpr std::size_t mostLines = 20;
    std::string text = std::to_string(blocks.size()) +
                       " configurations are selected, and a picture shows one. Select one, or take "
                       "--format pdf for all:";
    for (std::size_t i = 0; i < std::min(blocks.size(), mostLines); ++i) {
        const Block& block = blocks[i];
        // Bands are what people know files by; the same one may be there twice.
        const bool isBandUnique = std::ranges::all_of(blocks, [&](const Block& other) {
            return other.file == block.file || other.file->band != block.file->band;
        });
        text += isBandUnique ? "\n  --band " + std::to_string(block.file->band)
                             : "\n  --file " + std::to_string(block.fileNumber);
        text += " --configuration " + shellQuoted(lint::printable(block.configuration->label));
    }
    if (blocks.size() > mostLines) {
        text += "\nand " + std::to_string(blocks.size() - mostLines) +
                " more; 'eqrecord info' lists all";
    }
    return text;
}

/// Takes out when the picture was made, so that the same input gives the same bytes. cairo, which
/// writes the file, asks the clock and nothing else; PDF doesn't need the date. Blanks in its place
/// leave all offsets of the file as they are. It is in the last but one object: what is before it
/// may be compressed, and hold anything.
void removeDate(std::string& pdf) {
    const std::size_t start = pdf.rfind("/CreationDate (");
    if (start != std::string::npos) {
        const std::size_t end = std::min(pdf.find(')', start), pdf.size() - 1);
        pdf.replace(start, end + 1 - start, end + 1 - start, ' ');
    }
}

/// The configurations that can be shown; the others are told. That none can is an error: somebody
/// has named the wrong record.
std::vector<Block> shownOf(const PlotSource& source, const PlotArguments& arguments) {
    std::vector<Block> blocks = source.blocks();
    std::vector<Block> lacking;
    std::ranges::copy_if(blocks, std::back_inserter(lacking),
                         [&](const Block& block) { return !source.hasCounterpart(block); });
    std::erase_if(blocks, [&](const Block& block) { return !source.hasCounterpart(block); });
    const std::string lacks = lint::printable(arguments.against) + ": has no counterpart of ";
    if (blocks.empty()) {
        throw std::runtime_error(lacks + titleOf(lacking.front()));
    }
    for (const Block& block : lacking) {
        companion::say(programName, lacks, titleOf(block));
    }
    return blocks;
}

void writeText(const PlotSource& source, const std::vector<Block>& blocks,
               companion::OutputFile& output) {
    const std::size_t width = output.isTerminal() ? terminalWidth() : 80;
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        output.stream() << (i > 0 ? "\n" : "");
        writePlotText(source.pageOf(blocks[i]), width, output.stream());
    }
}

void writePicture(const PlotSource& source, const std::vector<Block>& blocks,
                  const std::string& format, std::ostream& out) {
    // Page by page: of a large record only one is in memory at a time.
    const auto writeScript = [&](std::ostream& script) {
        const char* const several = blocks.size() > 1 ? "pdf" : "svg";
        std::optional<PlotScript> plot;
        for (const Block& block : blocks) {
            const PlotPage page = source.pageOf(block);
            if (!plot) {
                plot.emplace(script, format == "gnuplot" ? several : format, page.panels.size());
            }
            plot->addPage(page);
        }
    };
    if (format == "gnuplot") {
        writeScript(out);
        return;
    }
    std::string picture = runGnuplot(writeScript);
    if (format == "pdf") {
        removeDate(picture);
    }
    out << picture;
}

int plot(const PlotArguments& arguments) {
    const Arguments& common = arguments.common;
    if (common.records.empty()) {
        throw companion::UsageError("no RECORD is given");
    }
    if (arguments.against == "-" && common.records[0] == "-") {
        throw companion::UsageError("--against: standard input is the RECORD already");
    }
    const std::string format = formatOf(common);
    companion::OutputFile output(common.output, common.overwrites);
    if (format != "text" && output.isTerminal()) {
        throw companion::UsageError("a terminal shows no picture: -o FILE, or --format text");
    }
    OpenRecord record(common.records[0], common);
    std::optional<OpenRecord> against;
    if (!arguments.against.empty()) {
        against.emplace(arguments.against, common);
    }
    const PlotSource source(record, against ? &*against : nullptr, arguments.selection,
                            arguments.marksOutliers);
    const std::vector<Block> blocks = shownOf(source, arguments);
    if (blocks.size() > 1 && (format == "svg" || format == "png")) {
        companion::say(programName, adviceFor(blocks));  // of several lines, so not thrown
        return companion::trouble;
    }
    if (format == "text") {
        writeText(source, blocks, output);
    } else {
        writePicture(source, blocks, format, output.stream());
    }
    output.commit();
    return blocks.size() == source.blocks().size() ? companion::nothingFound
                                                   : companion::somethingFound;
}

}  // namespace

void addPlot(CLI::App& app, Work& work) {
    Verb verb(app, "plot", "[OPTION...] [-o FILE] RECORD", "Draw coefficients, or differences");
    const auto arguments = std::make_shared<PlotArguments>();
    Arguments& common = arguments->common;
    verb.addOperands("RECORD", false, common.records);
    constexpr const char* group = "Picture";
    verb.addOption(
        {group, "--against", "RECORD",
         "Draw RECORD minus this one; configurations\nare matched by band and label"},
        [arguments = arguments.get()](const std::string& path) { arguments->against = path; });
    verb.addFlag(group, "--outliers", arguments->marksOutliers,
                 "Mark values far from the median of their\nneighbours of the same parity");
    arguments->selection.addTo(verb);
    common.format.clear();
    verb.addChoice(
        {"Output", "--format", "FORMAT",
         "svg, png, pdf, text or gnuplot, which is the\nscript for gnuplot (default: what the "
         "ending of\nFILE tells; text without -o)"},
        common.format, {"svg", "png", "pdf", "text", "gnuplot"});
    verb.addOutput(common);
    verb.addReading(common);
    verb.end(footer, [arguments, &work] { work = [arguments] { return plot(*arguments); }; });
}

}  // namespace eqrecord
