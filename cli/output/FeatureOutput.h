#ifndef LUMO_CLI_OUTPUT_FEATUREOUTPUT_H
#define LUMO_CLI_OUTPUT_FEATUREOUTPUT_H

#include "cli/output/RecordOutput.h"

#include "lumo/client/Catalogue.h"

namespace cli {

/// Prints records as a FeatureCollection of GeoJSON, a feature on each line. Its geometry is the footprint of
/// the record's main file, for which the centre is asked once for each file; null where that is not known.
void printFeatures(const RecordLists& lists, const lumo::Catalogue& catalogue);

} // namespace cli

#endif
