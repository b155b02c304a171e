#include "tools/companion/Program.h"

#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <memory>
#include <new>
#include <string_view>
#include <system_error>
#include <utility>

#include "tools/companion/OutputFile.h"

namespace companion {

namespace {

/// Usage, what the program does, its verbs, the options by groups with one blank line between them,
/// the rest.
class HelpFormatter : public CLI::Formatter {
  public:
    explicit HelpFormatter(std::string usage) : usage_(std::move(usage)) { column_width(26); }

    std::string make_help(const CLI::App* app, std::string name,
                          CLI::AppFormatMode mode) const override {
        std::string groups = make_subcommands(app, mode) + make_groups(app, mode);
        for (auto at = groups.find("\n\n\n"); at != std::string::npos;
             at = groups.find("\n\n\n", at)) {
            groups.erase(at, 1);
        }
        return "Usage: " + name + ' ' + usage_ + "\n\n" + make_description(app) + groups + '\n' +
               make_footer(app);
    }

  private:
    std::string usage_;
};

/// Makes sure that no file that is opened becomes a standard stream, to which somebody writes. One
/// that was closed still can't be written to.
void keepStandardStreams() {
    int descriptor = 0;
    while (descriptor >= 0 && descriptor <= STDERR_FILENO) {
        descriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    }
    ::close(descriptor);
}

/// Tells what was thrown, or that there is no memory to make that printable.
void tell(const char* name, MakePrintable printable, const char* text, bool isUsage = false) {
    try {
        const std::string advice = std::string("\nTry '") + name + " --help'.";
        say(name, printable(text), isUsage ? advice : "");
    } catch (const std::bad_alloc&) {
        say(name, "out of memory");
    }
}

int print(const std::string& text) {
    OutputFile output("-", false);
    output.stream() << text;
    output.commit();
    return nothingFound;
}

}  // namespace

void say(std::string_view name, std::string_view text, std::string_view more) {
    const auto part = [](std::string_view view) {
        return iovec{const_cast<char*>(view.data()), view.size()};
    };
    const std::array parts{part(name), part(": "), part(text), part(more), part("\n")};
    // There is nobody left to tell that this could not be written.
    [[maybe_unused]] const auto written =
        ::writev(STDERR_FILENO, parts.data(), static_cast<int>(parts.size()));
}

void prepare(CLI::App& app, const std::string& usage) {
    app.formatter(std::make_shared<HelpFormatter>(usage));
    app.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
}

int parseAndRun(CLI::App& app, const std::string& version, int argc, char** argv,
                const std::function<int()>& work) {
    app.set_help_flag("--help", "Print this")->group("Other");
    app.set_version_flag("--version", version, "Print the version and what is built in")
        ->group("Other");
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        return print(app.help());
    } catch (const CLI::CallForVersion& asked) {
        return print(asked.what() + std::string("\n"));
    }
    return work();
}

int runProgram(const char* name, MakePrintable printable, const std::function<int()>& program) {
    std::signal(SIGXFSZ, SIG_IGN);  // a file that grows too large is a failed write
    keepStandardStreams();
    try {
        return program();
    } catch (const CLI::Error& error) {
        tell(name, printable, error.what(), true);
    } catch (const UsageError& error) {
        tell(name, printable, error.what(), true);
    } catch (const std::system_error& error) {
        if (error.code() != std::errc::broken_pipe) {
            tell(name, printable, error.what());
        }
    } catch (const std::bad_alloc&) {
        say(name, "out of memory");
    } catch (const std::exception& error) {
        tell(name, printable, error.what());
    }
    return trouble;
}

}  // namespace companion
