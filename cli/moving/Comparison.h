#ifndef LUMO_CLI_MOVING_COMPARISON_H
#define LUMO_CLI_MOVING_COMPARISON_H

#include "cli/moving/Plan.h"

#include "lumo/client/BoxPlace.h"

#include <string>

namespace cli {

/// Compares files of a box with those below a local folder, on several threads. `source` is the tree whose
/// places are asked for: `box` or that of the local folder; all must outlive the result.
SameContent contentComparison(const lumo::BoxPlace& place, const Tree& box, const Tree& source,
                              const std::string& local, unsigned int threads);

} // namespace cli

#endif
