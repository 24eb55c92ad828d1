#ifndef LUMO_CLIENT_ID_H
#define LUMO_CLIENT_ID_H

#include "lumo/core/Identifier.h"

namespace lumo {

/// The identifier of one sort of record, so that a folder's is never passed for a file's. One that is not set
/// means none.
template <class Tag>
class Id
{
public:
    constexpr Id() = default;
    /// The number that the centre uses; 0xFFFFFFFF is none.
    constexpr explicit Id(unsigned int number) : m_Number(number) {}

    constexpr bool isSet() const { return m_Number != kNoIdentifier; }
    constexpr unsigned int number() const { return m_Number; }

    friend constexpr bool operator==(Id left, Id right) { return left.m_Number == right.m_Number; }
    friend constexpr bool operator!=(Id left, Id right) { return left.m_Number != right.m_Number; }
    friend constexpr bool operator<(Id left, Id right) { return left.m_Number < right.m_Number; }

private:
    unsigned int m_Number = kNoIdentifier;
};

using CompanyId = Id<struct CompanyTag>;
using DiskId = Id<struct DiskTag>;
using FolderId = Id<struct FolderTag>;
using FileId = Id<struct FileTag>;
using ProjectId = Id<struct ProjectTag>;
using TypeId = Id<struct TypeTag>;
/// Of an image, a product, a control file or a control point, within its kind.
using RecordId = Id<struct RecordTag>;
/// Of a comment or a mark, within its table.
using CommentId = Id<struct CommentTag>;
using AreaId = Id<struct AreaTag>;

} // namespace lumo

#endif
