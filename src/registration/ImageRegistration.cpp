#include "core/CallFrame.h"
#include "core/LogLine.h"
#include "core/NoteFailure.h"
#include "lumo/core/CStringCodec.h"
#include "lumo/core/Identifier.h"
#include "lumo/core/LumoDataMgr.h"
#include "registration/AssignmentText.h"

using ledgerserver::CheckDataBean;
using ledgerserver::DataUtilBeanReq;
using ledgerserver::DataUtilBeanRsp;

namespace {

/// Takes the value of a key into its field; false when the value can't be one.
using Take = bool (*)(CheckDataBean& bean, const QString& value);

/// A key that registration picks out of the text.
struct Key
{
    const char* name;
    Take take;
};

/// The keys that identify a record of a kind, in the order in which they are looked for.
struct KeysOfKind
{
    ENUM_DATA_TYPE kind;
    Key first;
    Key second; ///< without a name where there is none
};

template <void (CheckDataBean::*Set)(google::protobuf::uint32)>
bool number(CheckDataBean& bean, const QString& value)
{
    bool ok = false;
    const unsigned int id = value.toUInt(&ok, 10);
    if (!ok || id == kNoIdentifier)
        return false;
    (bean.*Set)(id);
    return true;
}

template <std::string* (CheckDataBean::*Mutable)()>
bool text(CheckDataBean& bean, const QString& value)
{
    if (value.isEmpty())
        return false;
    *(bean.*Mutable)() = value.toUtf8().constData();
    return true;
}

constexpr Key kMainFile = {"mainFileID", text<&CheckDataBean::mutable_mainfileid>};
constexpr Key kNone = {nullptr, nullptr};

constexpr KeysOfKind kKeys[] = {
    {DATA_TYPE_DATA,
     {"companyID", number<&CheckDataBean::set_company_id>},
     {"projectName", text<&CheckDataBean::mutable_proname>}},
    {DATA_TYPE_TYPE,
     {"projectID", number<&CheckDataBean::set_project_id>},
     {"dataType", text<&CheckDataBean::mutable_datatype>}},
    {DATA_TYPE_KF_IMAGE, kMainFile, kNone},
    {DATA_TYPE_SAT_IMAGE, kMainFile, kNone},
    {DATA_TYPE_ADS_IMAGE, kMainFile, kNone},
    {DATA_TYPE_CTRL_FILE, kMainFile, kNone},
    {DATA_TYPE_CTRL_POINT,
     {"dqConID", number<&CheckDataBean::set_dqcon_id>},
     {"conNumber", text<&CheckDataBean::mutable_connumber>}},
    {DATA_TYPE_DEM, kMainFile, kNone},
    {DATA_TYPE_DSM, kMainFile, kNone},
    {DATA_TYPE_DOM, kMainFile, kNone},
    {DATA_TYPE_DLG, kMainFile, kNone},
};

const KeysOfKind* keysOf(int kind)
{
    for (const KeysOfKind& keys : kKeys)
        if (keys.kind == kind)
            return &keys;
    return nullptr;
}

constexpr char kPopulate[] = "CLumoDataMgr::populateCheckData";

/// Writes the last line of the caller too: it writes none for a text that is refused.
void leaveForCaller()
{
    LUMO_LOG(kPopulate, "Leave Function : addImage");
}

} // namespace

// Registration

unsigned int CLumoDataMgr::addImage(int type, const QString& text)
{
    CallFrame frame(*this, "addImage");
    CheckDataBean bean;
    if (!populateCheckData(&bean, type, text))
        return kNoIdentifier;
    DataUtilBeanReq request;
    request.set_data_type_id(type);
    request.mutable_checkdatabean()->Swap(&bean);
    unsigned int id = kNoIdentifier;
    frame.ask(LUMO_LEDGER(saveSingleDataByType), request, verdicts::zero, readers::id(id));
    return id;
}

bool CLumoDataMgr::addImage(int type, const QStringList& texts, QList<unsigned int>& ids)
{
    CallFrame frame(*this, "addImage");
    DataUtilBeanReq request;
    for (const QString& text : texts)
        if (!populateCheckData(request.add_checkdatabeans(), type, text))
            return false;
    request.set_data_type_id(type);
    return frame.ask(LUMO_LEDGER(saveFullDataByType), request, verdicts::zero,
                     [&](const DataUtilBeanRsp& response) {
                         for (const unsigned int id : response.id_list())
                             ids.append(id);
                     });
}

bool CLumoDataMgr::populateCheckData(CheckDataBean* bean, int type, const QString& text)
{
    QMap<QString, QString> values;
    if (!assignmenttext::parse(text, values)) {
        LUMO_LOG(kPopulate, "Match QRegExp(\"(.*)='(.*)'\") Failed : %s",
                 CLumoCStringCodec::toStdString(text).c_str());
        return false;
    }
    bean->set_sqldata(text.toUtf8().constData());
    const KeysOfKind* keys = keysOf(type);
    if (!keys) {
        LUMO_LOG(kPopulate, "Image Type Error");
        leaveForCaller();
        return false;
    }
    for (const Key& key : {keys->first, keys->second}) {
        if (key.name && !key.take(*bean, values.value(QLatin1String(key.name)))) {
            lumo::noteFailure(lumo::LastFailure::Kind::NotSent, "addImage", 0, key.name);
            LUMO_LOG(kPopulate, "Can't Find Field : %s", key.name);
            leaveForCaller();
            return false;
        }
    }
    return true;
}
