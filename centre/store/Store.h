#ifndef LUMO_CENTRE_STORE_STORE_H
#define LUMO_CENTRE_STORE_STORE_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace centre {

class Database;
class Statement;

/// Writes to a catalogue: companies, users, boxes, areas, disks. May be used while another process serves
/// it, by one thread at a time. What a function returns from has reached the disk. All throw Error;
/// names are UTF-8, and one that is taken already is an error.
class Store
{
public:
    /// Makes a data folder, or the tables on a server, with one company and its administrator, or nothing at
    /// all. Returns the administrator's token.
    static std::string create(const std::string& place, const std::string& companyNo,
                              const std::string& userName);

    /// Opens a data folder or the database of a server.
    explicit Store(const std::string& place);
    ~Store();

    std::uint32_t addCompany(const std::string& companyNo);
    /// Adds a writer or a reader, as Accounts does.
    std::string addUser(const std::string& userName, const std::string& companyNo, bool mayWrite = true);
    /// Storage box `code` can be reached at `address`, "host:port".
    void addBox(const std::string& code, const std::string& address);

    std::string boxAddress(const std::string& code);
    void setBoxAddress(const std::string& code, const std::string& address);

    /// The box serves its files over HTTP at `url`, "https://host:port"; empty: it does not.
    void setBoxHttp(const std::string& code, const std::string& url);
    /// Returns the secret by which the processes of this catalogue sign links. The first call makes it.
    std::string linkSecret();

    /// A national area, below another if it has a parent.
    void addArea(std::uint32_t id, const std::string& name, std::optional<std::uint32_t> parentId = {});

    std::uint32_t companyId(const std::string& companyNo);

    /// Adds a disk with its top folder, whose identifier is returned. `boxCode` empty: no box holds it.
    std::uint32_t addDisk(const std::string& name, const std::string& rootPath, const std::string& companyNo,
                          const std::string& boxCode = {});
    /// For tests and benchmarks: registers files "file-000000.dat", "file-000001.dat" and so on.
    void addMadeUpFiles(std::uint32_t folderId, std::uint32_t count);

    /// Absolute, without symbolic links; empty for a server.
    const std::string& dataFolder() const { return m_DataFolder; }
    Database& database() { return *m_Database; }

private:
    Store(std::unique_ptr<Database> database, const std::string& place);

    std::unique_ptr<Database> m_Database;
    const std::string m_DataFolder;
};

/// Throws Error(WrongUse) unless `name` can be a name: not empty, UTF-8, without control characters.
/// `what` says whose name it is.
void requireName(const std::string& what, const std::string& name);

/// Runs one insertion, which may return an identifier. Throws Error with `taken` if the record is there
/// already, with `missing` if one that it refers to is not there.
std::uint32_t insert(Statement& statement, const std::string& taken,
                     const std::string& missing = "there is no such box; add-box adds one");

} // namespace centre

#endif
