#ifndef LUMO_CLI_MOVING_MOVER_H
#define LUMO_CLI_MOVING_MOVER_H

#include "cli/moving/Plan.h"

#include "lumo/client/BoxPlace.h"
#include "lumo/client/Catalogue.h"

#include <functional>
#include <memory>
#include <string>

namespace cli {

/// Moves the files of a plan, in one direction. Safe from several threads. A transfer reports its failure in
/// its outcome; the other members throw lumo::Error or Failure.
class Mover
{
public:
    virtual ~Mover() = default;

    /// Moves all of the source at once.
    virtual lumo::Transfer::Outcome moveAll(bool overwrite, const lumo::BoxPlace::Percent& percent) = 0;
    /// Moves one file.
    virtual lumo::Transfer::Outcome move(const PlanItem& item, bool overwrite) = 0;
    virtual void makeFolder(const PlanItem& item) = 0;
    /// Removes a file or an empty folder of the target.
    virtual void remove(const PlanItem& item) = 0;
};

/// Fetches a file whose name is not known into a local folder.
using GetByIdentifier = std::function<lumo::Transfer::Outcome(lumo::FileId file, const std::string& folder)>;

/// From a storage box to a local path.
std::unique_ptr<Mover> moverFrom(const lumo::BoxPlace& source, const std::string& target,
                                 const GetByIdentifier& getByIdentifier = {});

/// From a local path to `name`, which may have several components, below a folder of the catalogue.
std::unique_ptr<Mover> moverTo(const std::string& source, const lumo::BoxPlace& target,
                               const lumo::Catalogue& catalogue, const lumo::Entry& folder,
                               const std::string& name);

} // namespace cli

#endif
