#ifndef QORMATH_TOOLS_COMMANDS_H
#define QORMATH_TOOLS_COMMANDS_H

// The subcommands. Each registers itself on the top-level app and hands back the
// function that runs it once the command line has been parsed; a new subcommand
// is one more add*Command here and one more line in main.

#include <functional>

namespace CLI {
class App;
}

namespace qtool {

struct GlobalOptions {
    bool json = false;
};

struct Command {
    CLI::App* app;
    std::function<int()> run;
};

Command addMatrixCommand(CLI::App& parent, const GlobalOptions& global);
Command addBBoxCommand(CLI::App& parent, const GlobalOptions& global);
Command addFlattenCommand(CLI::App& parent, const GlobalOptions& global);
Command addSplitCommand(CLI::App& parent, const GlobalOptions& global);
Command addCurveCommand(CLI::App& parent, const GlobalOptions& global);
Command addIntersectCommand(CLI::App& parent, const GlobalOptions& global);
Command addSelfxCommand(CLI::App& parent, const GlobalOptions& global);
Command addCuspsCommand(CLI::App& parent, const GlobalOptions& global);
Command addOffsetCommand(CLI::App& parent, const GlobalOptions& global);
Command addFitCommand(CLI::App& parent, const GlobalOptions& global);
Command addGalleryCommand(CLI::App& parent, const GlobalOptions& global);

}  // namespace qtool

#endif
