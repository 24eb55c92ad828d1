#ifndef LUMO_CENTRE_BOX_DATAFOLDERCATALOGUE_H
#define LUMO_CENTRE_BOX_DATAFOLDERCATALOGUE_H

#include "centre/box/BoxCatalogue.h"
#include "centre/store/ConnectionPool.h"

namespace centre {

/// The catalogue of a data folder, as one of its storage boxes asks it. A user may read and write what lies
/// on a disk of the box that is of the user's company, and read the packages of versions on the box. A user
/// who may only read may not write, and an upload that names a folder goes to that folder or below it. The
/// data folder itself is out of reach.
class DataFolderCatalogue : public BoxCatalogue
{
public:
    DataFolderCatalogue(ConnectionPool& pool, std::string boxCode)
        : m_Pool(pool), m_BoxCode(std::move(boxCode))
    {
    }

    std::optional<Place> admit(const std::string& token, const haulbox::Carried& carried,
                               const std::string& path, Use use, std::string& reason) override;

    /// On every disk of the box that shows the entry's place. Throws std::runtime_error for one that none
    /// shows; nothing is registered then.
    void record(const std::vector<Entry>& entries) override;

private:
    void registerAll(const std::vector<Entry>& entries);

    ConnectionPool& m_Pool;
    const std::string m_BoxCode;
};

} // namespace centre

#endif
