// The files are converted by the converter itself, into nowhere: what it looks for and finds comes
// in as events, what it says as messages, and its record is only counted. Whatever would end the
// run is told, and then the run goes on, so that one look shows all that is wrong; what was said
// and counted before the first end is what a conversion comes to.

#include "lint/Check.h"

#include <cstring>
#include <stdexcept>
#include <string>

#include "converter/Converter.h"
#include "converter/Messages.h"
#include "lint/ConfigurationCheck.h"
#include "lint/DataCheck.h"
#include "lint/HeaderCheck.h"
#include "lint/MarkupCheck.h"
#include "lint/SetCheck.h"
#include "lint/Teller.h"

namespace lint {

namespace {

constexpr std::size_t shortestRoot = 4;

/// Runs the converter over a set and looks on.
class Checker : public ReadListener, public MessageSink, public record::Sink {
  public:
    Checker(std::span<const char* const> paths, const CheckOptions& options, Report& report)
        : paths_(paths),
          keepsMessages_(options.keepsMessages),
          teller_(report, options),
          set_(teller_, options.expectation),
          markup_(teller_, options.strictXml),
          header_(teller_),
          data_(teller_, set_),
          configuration_(teller_, set_, markup_) {}

    Conversion run();

    void sought(Sought what, const MarkupDocument& document, int elem) override;
    void say(std::string_view message) override;
    bool end(std::string_view message) override;
    void write(std::string_view bytes) override;

  private:
    void convert(std::span<const char* const> paths);
    void beginFile(const MarkupDocument& document, int root);
    void beginReading(const MarkupDocument& document, int root, std::string_view name);
    void endFile(const MarkupDocument& document);
    void abort(const char* what);
    void stop(int status);

    std::span<const char* const> paths_;
    bool keepsMessages_;
    Teller teller_;
    SetCheck set_;
    MarkupCheck markup_;
    HeaderCheck header_;
    DataCheck data_;
    ConfigurationCheck configuration_;

    Conversion conversion_;
    std::string said_;           ///< all messages until the run ends
    std::size_t fileCount_ = 0;  ///< files that were begun
    bool isFirst_ = true;        ///< no file has given its header yet
    bool isUnreadable_ = false;
    bool makesGiveUp_ = false;    ///< the file makes the converter abort
    std::string reason_;          ///< why the file is unreadable
    bool isStoppedHere_ = false;  ///< something in this file would end the run
    Sought last_ = Sought::FileType;
    int lastElem_ = 0;
    int dataElem_ = 0;
};

Conversion Checker::run() {
    while (fileCount_ < paths_.size()) {
        isFirst_ = true;
        convert(paths_.subspan(fileCount_));
    }
    teller_.setFile(paths_.empty() ? "" : paths_.front(), nullptr);
    set_.endSet();
    for (std::size_t start = 0; start < said_.size();) {
        const std::size_t lineEnd = std::min(said_.find('\n', start), said_.size());
        conversion_.messages.push_back(said_.substr(start, lineEnd - start));
        start = lineEnd + 1;
    }
    conversion_.isComplete = conversion_.status == 0;
    return std::move(conversion_);
}

/// Converts files until the end, or until one makes the converter give up; that one counts as
/// begun.
void Checker::convert(std::span<const char* const> paths) {
    std::size_t longest = 0;
    for (const char* const path : paths) {
        longest = std::max(longest, std::strlen(path));
    }
    Messages messages(*this, longest);
    try {
        Converter(*this, messages, this).run(paths);
    } catch (const std::out_of_range& error) {
        if (!makesGiveUp_) {
            throw;  // is a fault of the checks
        }
        abort(error.what());
    }
}

void Checker::sought(Sought what, const MarkupDocument& document, int elem) {
    last_ = what;
    lastElem_ = elem;
    if (what == Sought::FileType) {
        beginFile(document, elem);
    } else if (isUnreadable_) {
        if (what == Sought::Configuration && !isStoppedHere_) {
            teller_.tell("EQ102", Severity::warning, 0,
                         reason_ + ": its NUC table is read as 0, and an empty block is written");
        }
    } else if (what < Sought::Data) {
        header_.sought(what, document, elem);
    } else if (what < Sought::Configuration) {
        dataElem_ = what == Sought::Data ? elem : dataElem_;
        data_.sought(what, document, elem);
    } else {
        configuration_.sought(what, document, elem);
        if (what == Sought::Configuration && elem == 0) {
            endFile(document);
        }
    }
}

void Checker::beginFile(const MarkupDocument& document, int root) {
    const char* const path = paths_[fileCount_];
    const int error = document.GetFileError();
    isUnreadable_ = root == 0;
    isStoppedHere_ = false;
    dataElem_ = 0;
    reason_ = error != 0 ? std::string("the file can't be read (") + std::strerror(error) + ")"
                         : "there is no element in the file";
    teller_.setFile(path, &document);
    set_.beginFile(paths_, fileCount_++);
    if (error == EFBIG) {
        teller_.tell("EQ210", Severity::warning, 0, "the file has 2 GB or more: it is not read");
    }
    if (!document.GetDoc().empty()) {
        markup_.begin(path, document);
    }
    const std::string_view name = document.tagNameView(root);
    makesGiveUp_ = isFirst_ && name.size() < shortestRoot;
    if (!isUnreadable_ && !makesGiveUp_) {
        beginReading(document, root, name);
        return;
    }
    if (!document.GetDoc().empty()) {
        markup_.end();
    }
    if (!isUnreadable_) {
        reason_ = "the file type " + inQuotes(name) + " has fewer than 4 characters";
    }
    if (makesGiveUp_) {
        teller_.tell("EQ101", Severity::error, root,
                     reason_ + ": the converter aborts (status 134), and nothing is written");
    }
}

void Checker::beginReading(const MarkupDocument& document, int root, std::string_view name) {
    set_.root(name, root);
    if (!isFirst_) {
        header_.compare(document);
    }
    isFirst_ = false;
}

void Checker::endFile(const MarkupDocument& document) {
    set_.endFile(dataElem_ == 0 ? document.record(0).child : dataElem_);
    markup_.end();
}

/// The converter has given up on the first file, in the way that a standard library tells of.
void Checker::abort(const char* what) {
    say("terminate called after throwing an instance of 'std::out_of_range'\n  what():  " +
        std::string(what) + "\n");
    stop(Conversion::aborted);
}

void Checker::say(std::string_view message) {
    if (keepsMessages_ && !teller_.isStopped()) {
        said_ += message;
    }
}

bool Checker::end(std::string_view message) {
    isStoppedHere_ = true;
    if (isUnreadable_) {
        teller_.tell(
            "EQ102", Severity::error, 0,
            reason_ + ": its NUC table is read as 0, and the run ends here with status 255");
    } else if (last_ == Sought::NucTableId) {
        teller_.tell("EQ406", Severity::error, lastElem_ == 0 ? dataElem_ : lastElem_,
                     std::string(message.substr(0, message.find('\n'))) +
                         ": the run ends here with status 255");
    } else {
        configuration_.end(last_, message);
    }
    say(message);
    stop(Converter::stopped);
    return true;
}

/// The run ends at what was told last, unless it has ended before.
void Checker::stop(int status) {
    if (!teller_.isStopped()) {
        teller_.stop();
        conversion_.status = status;
        conversion_.stoppedPath = teller_.stoppedPath();
        conversion_.stoppedLine = teller_.stoppedPlace().line;
        conversion_.stoppedColumn = teller_.stoppedPlace().column;
    }
}

void Checker::write(std::string_view bytes) {
    if (!teller_.isStopped()) {
        conversion_.recordBytes += static_cast<long long>(bytes.size());
    }
}

}  // namespace

Conversion check(std::span<const char* const> paths, const CheckOptions& options, Report& report) {
    return Checker(paths, options, report).run();
}

}  // namespace lint
