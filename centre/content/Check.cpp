#include "centre/content/Check.h"

#include "centre/base/Error.h"

#include <utility>

namespace centre {

namespace {

class Checker : public DiskVisitor
{
public:
    Checker(const Disk& disk, const CheckOptions& options) : m_Disk(disk), m_Options(options) {}

    bool visit(DiskEntry& entry) override
    {
        m_Options.progress(++m_Entries);
        if (entry.id == 0)
            add({Difference::Kind::Extra, entry});
        else if (entry.real == DiskEntry::Real::Absent)
            add({Difference::Kind::Missing, entry});
        else if (entry.real == DiskEntry::Real::OtherKind)
            add({Difference::Kind::OtherKind, entry});
        else if (entry.isFolder)
            ++m_Report.folders;
        else
            compareContent(entry);
        return entry.real != DiskEntry::Real::OtherKind;
    }

    void skip(const std::string& path, const std::string& reason) override
    {
        Difference difference{Difference::Kind::Unread, DiskEntry()};
        difference.path = path;
        difference.reason = reason;
        add(difference);
    }

    CheckReport& report() { return m_Report; }

private:
    void compareContent(const DiskEntry& entry)
    {
        if (entry.catalogueSize && *entry.catalogueSize != entry.size)
            return add({Difference::Kind::Size, entry});
        if (m_Options.readDigests && !entry.catalogueDigest.empty() && !hasDigest(entry))
            return;
        ++m_Report.files;
        m_Report.bytes += entry.size;
        m_Report.unknownSizes += entry.catalogueSize ? 0 : 1;
    }

    /// Reports a file that has another digest or can't be read.
    bool hasDigest(const DiskEntry& entry)
    {
        const std::string path = (m_Disk.rootPath == "/" ? "" : m_Disk.rootPath) + "/" + entry.below;
        try {
            std::string digest = digestOfFile(path);
            if (digest != entry.catalogueDigest) {
                add({Difference::Kind::Digest, entry, std::move(digest)});
                return false;
            }
            ++m_Report.digests;
            return true;
        } catch (const Error& error) {
            skip(path, error.what());
            return false;
        }
    }

    void add(const Difference& difference)
    {
        ++m_Report.differences[difference.kind];
        m_Options.report(difference);
    }

    const Disk& m_Disk;
    const CheckOptions& m_Options;
    CheckReport m_Report;
    std::uint64_t m_Entries = 0;
};

} // namespace

std::string nameOf(Difference::Kind kind)
{
    switch (kind) {
    case Difference::Kind::Missing:
        return "missing";
    case Difference::Kind::Extra:
        return "extra";
    case Difference::Kind::Size:
        return "size";
    case Difference::Kind::Digest:
        return "digest";
    case Difference::Kind::OtherKind:
        return "kind";
    case Difference::Kind::Unread:
        break;
    }
    return "unread";
}

std::uint64_t CheckReport::count(Difference::Kind kind) const
{
    const auto found = differences.find(kind);
    return found == differences.end() ? 0 : found->second;
}

bool CheckReport::differs() const
{
    return differences.size() > (count(Difference::Kind::Unread) > 0 ? 1 : 0);
}

CheckReport checkDisk(Store& store, const Disk& disk, const CheckOptions& options)
{
    DiskWalk walk(store, disk);
    walk.requireMounted();
    Checker checker(disk, options);
    walk.run(checker);
    checker.report().notServed = walk.notServed();
    return checker.report();
}

} // namespace centre
