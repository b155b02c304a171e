#include "tools/companion/CommandLine.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <utility>

#include "tools/companion/Program.h"

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

}  // namespace

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
    } catch (const CLI::Error& error) {
        throw UsageError(error.what());
    }
    return work();
}

}  // namespace companion
