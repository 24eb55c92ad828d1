#ifndef LUMO_CENTRE_BOX_DATAFOLDERCATALOGUE_H
#define LUMO_CENTRE_BOX_DATAFOLDERCATALOGUE_H

#include "centre/box/BoxCatalogue.h"
#include "centre/store/ConnectionPool.h"

namespace centre {

/// The catalogue of a data folder for one of its storage boxes. A user may read and write on the disks of the
/// box that belong to the user's company, and read the packages of versions on the box. A read-only user may
/// not write. An upload that names a folder must go to that folder or below it. Nobody reaches the data
/// folder itself.
class DataFolderCatalogue : public BoxCatalogue
{
public:
    DataFolderCatalogue(ConnectionPool& pool, std::string boxCode)
        : m_Pool(pool), m_BoxCode(std::move(boxCode))
    {
    }

    std::optional<Place> admit(const std::string& token, const haulbox::Carried& carried,
                               const std::string& path, Use use, std::string& reason) override;

    bool mayUse(const std::string& token, Use use) override;

    /// Registers on every disk of the box that shows the entry's place. Throws std::runtime_error for an
    /// entry that no disk shows, and then registers nothing.
    void record(const std::vector<Entry>& entries) override;

private:
    void registerAll(const std::vector<Entry>& entries);

    ConnectionPool& m_Pool;
    const std::string m_BoxCode;
};

} // namespace centre

#endif
