#include "centre/base/Error.h"
#include "centre/ledger/AssignmentText.h"
#include "centre/ledger/Changes.h"
#include "centre/store/Ownership.h"
#include "centre/store/RecordKinds.h"
#include "centre/store/RecordWriter.h"
#include "ledgerserver.pb.h"

#include <algorithm>

namespace centre {

namespace {

using namespace ledgerserver;

const RecordKind& kindOf(int type)
{
    const auto& kinds = recordKinds();
    const auto kind = std::find_if(kinds.begin(), kinds.end(),
                                   [type](const RecordKind& each) { return each.number == type; });
    if (kind == kinds.end())
        throw refusal("records of data type " + std::to_string(type) + " can't be registered");
    return *kind;
}

/// Registers records of one kind, inside the caller's transaction.
class Registrar
{
public:
    Registrar(const Caller& caller, const RecordKind& kind)
        : m_Caller(caller),
          m_Kind(kind),
          m_Writer(caller.connection.database(), Origin::User, caller.user.companyId)
    {
    }

    std::uint32_t add(const std::string& assignments)
    {
        const RecordTexts texts = parseAssignments(assignments);
        const std::uint32_t id = m_Writer.add(m_Kind, texts);
        // The texts are well formed by now; the new row shows whose it would be.
        if (!isOwn(m_Caller.connection, m_Caller.user, m_Kind.number, id))
            throw refusal("the record would belong to another company than user " + m_Caller.user.name +
                          "'s");
        for (const auto& [key, text] : texts)
            if (key == "mainFileID" && !text.empty())
                requireReadable(m_Caller.connection, m_Caller.user, DATA_TYPE_FILE,
                                static_cast<std::uint32_t>(std::stoul(text)));
        return id;
    }

private:
    const Caller& m_Caller;
    const RecordKind& m_Kind;
    RecordWriter m_Writer;
};

Result saveOne(const Caller& caller, const DataUtilBeanReq& request, DataUtilBeanRsp& response)
{
    Registrar registrar(caller, kindOf(request.data_type_id()));
    response.set_id(registrar.add(request.checkdatabean().sqldata()));
    return kDone;
}

Result saveAll(const Caller& caller, const DataUtilBeanReq& request, DataUtilBeanRsp& response)
{
    Registrar registrar(caller, kindOf(request.data_type_id()));
    int number = 0;
    try {
        for (const CheckDataBean& record : request.checkdatabeans()) {
            ++number;
            response.add_id_list(registrar.add(record.sqldata()));
        }
    } catch (const Error& error) {
        throw Error(error.code(), "record " + std::to_string(number) + " of " +
                                      std::to_string(request.checkdatabeans_size()) + ": " + error.what());
    }
    return kDone;
}

} // namespace

std::vector<Change> registrationChanges()
{
    std::vector<Change> changes = {
        makeChange("saveSingleDataByType", saveOne),
        makeChange("saveFullDataByType", saveAll),
    };
    for (Change& change : changes)
        change.addsRecords = true;
    return changes;
}

} // namespace centre
