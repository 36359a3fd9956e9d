#ifndef QORMATH_TOOLS_COMMANDS_H
#define QORMATH_TOOLS_COMMANDS_H

// The subcommands. Each registers itself on the top-level app and hands back the
// function that runs it once the command line has been parsed; a new subcommand
// is one more add*Command here and one more line in main.

#include <functional>
#include <vector>

#include "QorMath/types.h"

namespace CLI {
class App;
}
namespace QorMath {
class VectorField;
}
namespace qtool::svg {
class Panel;
struct Style;
}  // namespace qtool::svg

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
Command addLayoutCommand(CLI::App& parent, const GlobalOptions& global);
Command addFieldCommand(CLI::App& parent, const GlobalOptions& global);
Command addMiscCommand(CLI::App& parent, const GlobalOptions& global);
Command addGalleryCommand(CLI::App& parent, const GlobalOptions& global);

// Pieces a command shares with its gallery panel.

/// An "F" outline filling box, its stem on the left-bottom corner: drawn inside
/// an object and again under a layout matrix, it shows scaling and mirroring.
std::vector<QorMath::Point2d> layoutGlyph(const QorMath::BoundsT<double>& box);

/// Writes, with Set, the counter-clockwise swirl (-dy, dx)·(1 - r/radius) into
/// every cell at offset (dx, dy) and distance r < radius from the field's centre;
/// the cells outside keep their fill.
void writeSwirl(QorMath::VectorField& field, double radius);
/// The field's stored runs as strips in runs, and arrows in arrows at every
/// stride-th cell but the last column and row, sampled with Get and scaled so
/// that the longest spans 0.9·stride cells.
void drawVectorField(svg::Panel& panel, const QorMath::VectorField& field, int stride, const svg::Style& runs,
                     const svg::Style& arrows);
/// The path from seed along the field by midpoint steps about step long, each
/// sampled with Get, until it has run length, stalls or leaves the field.
std::vector<QorMath::Point2d> traceStreamline(const QorMath::VectorField& field, const QorMath::Point2d& seed,
                                              double step, double length);

}  // namespace qtool

#endif
