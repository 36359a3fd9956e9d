// qormath: a command-line window on the QorMath library.

#include <CLI/CLI.hpp>

#include <iostream>
#include <string>
#include <vector>

#include "args.h"
#include "commands.h"

namespace {

// Every failure is one line on stderr.
int fail(const std::string& message, int status) {
    std::string line = message;
    for (char& ch : line)
        if (ch == '\n') ch = ' ';
    std::cerr << "qormath: error: " << line << "\n";
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"Explore the QorMath 2D geometry library from the command line.", "qormath"};
    app.fallthrough();  // --json is accepted after the subcommand too
    app.require_subcommand(1);
    qtool::GlobalOptions global;
    app.add_flag("--json", global.json, "Print machine-readable JSON instead of text");

    const std::vector<qtool::Command> commands = {
        qtool::addMatrixCommand(app, global),
        qtool::addBBoxCommand(app, global),
        qtool::addSplitCommand(app, global),
        qtool::addCurveCommand(app, global),
        qtool::addFlattenCommand(app, global),
        qtool::addIntersectCommand(app, global),
        qtool::addSelfxCommand(app, global),
        qtool::addCuspsCommand(app, global),
        qtool::addOffsetCommand(app, global),
        qtool::addFitCommand(app, global),
        qtool::addLayoutCommand(app, global),
        qtool::addFieldCommand(app, global),
        qtool::addMiscCommand(app, global),
        qtool::addGalleryCommand(app, global),
    };

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        if (e.get_exit_code() == 0) return app.exit(e);  // --help
        return fail(std::string(e.what()) + " (see --help)", 2);
    }
    try {
        for (const auto& command : commands)
            if (command.app->parsed()) return command.run();
    } catch (const qtool::UsageError& e) {
        return fail(e.what(), 2);
    } catch (const std::exception& e) {
        return fail(e.what(), 1);
    }
    return 0;
}
