#ifndef LUMO_CLI_OUTPUT_FOOTPRINT_H
#define LUMO_CLI_OUTPUT_FOOTPRINT_H

#include "cli/output/Output.h"

#include "lumo/client/Entry.h"

#include <optional>
#include <utility>
#include <vector>

namespace cli {

/// Where an image is on the earth, in degrees of WGS 84.
struct Footprint
{
    /// Longitude and latitude of the corners, counterclockwise, the first one again at the end; between them
    /// points of edges that are not straight. Longitudes are continuous, beyond 180 across the date line.
    std::vector<std::pair<double, double>> ring;
    double west, south, east, north; ///< of the ring
};

/// Returns the footprint of the image that a file is, from the file's long text, in which the centre notes
/// the reference system and the bounds: "EPSG:4326 west 70 south 10 east 150 north 55". Returns nothing for
/// any other text, an unknown system, and bounds that have no place in degrees.
std::optional<Footprint> footprintOf(const lumo::Entry& file);

/// "west 70 south 10 east 150 north 55"
std::string boundsText(const Footprint& footprint);
/// An array of the same numbers, as GeoJSON has them.
Json boundsJson(const Footprint& footprint);
/// A polygon of GeoJSON; null without a footprint.
Json geometryJson(const std::optional<Footprint>& footprint);

} // namespace cli

#endif
