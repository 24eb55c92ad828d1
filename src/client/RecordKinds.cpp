#include "client/RecordKinds.h"

#include "client/RecordFields.h"
#include "client/RecordText.h"
#include "lumo/core/LumoDataMgr.h"

#include <algorithm>
#include <type_traits>

namespace lumo {

namespace internal {

namespace {

using Manager = CLumoDataMgr;

template <class Source>
using GetOne = ENUM_RET_TYPE (Manager::*)(unsigned int, Source&);
template <class Source>
using GetList = ENUM_RET_TYPE (Manager::*)(unsigned int, QList<Source>&);
template <class Source>
using GetMarked = ENUM_RET_TYPE (Manager::*)(unsigned int, unsigned int, QList<Source>&);

template <class Source>
RecordKind::One oneBy(GetOne<Source> get)
{
    return [get](const Call& call, unsigned int id) {
        auto source = markedRecord<Source>();
        return call.answered((call.manager().*get)(id, source)) ? std::optional(recordFrom(source))
                                                                : std::nullopt;
    };
}

template <class Source>
RecordKind::List listBy(GetList<Source> get)
{
    if (get == nullptr)
        return {};
    return [get](const Call& call, unsigned int parent) {
        QList<Source> sources;
        const ENUM_RET_TYPE result = (call.manager().*get)(parent, sources);
        if constexpr (std::is_same_v<Source, tagTypeTable>)
            call.answered(result); // they come in one answer
        else
            call.requireWhole(result);
        return recordsFrom(std::move(sources));
    };
}

template <class Source>
RecordKind::MarkedList listBy(GetMarked<Source> get)
{
    if (get == nullptr)
        return {};
    return [get](const Call& call, unsigned int project, unsigned int mark) {
        QList<Source> sources;
        call.answered((call.manager().*get)(project, mark, sources));
        return recordsFrom(std::move(sources));
    };
}

template <class Source>
RecordKind kind(Record::Kind kind, const char* word, const char* name, ENUM_DATA_TYPE number,
                const char* typeName, GetOne<Source> one, GetList<Source> list = nullptr,
                GetList<Source> inProject = nullptr, GetMarked<Source> marked = nullptr)
{
    return {kind,
            word,
            name,
            number,
            typeName,
            oneBy<Source>(one),
            listBy<Source>(list),
            listBy<Source>(inProject),
            listBy<Source>(marked),
            [] { return recordFrom(Source{}); }};
}

} // namespace

const std::vector<RecordKind>& recordKinds()
{
    using Kind = Record::Kind;
    // clang-format off
    // Never destroyed: a call may run while the process ends.
    static const auto* const kKinds = new std::vector<RecordKind>{
        kind<tagDataTable>(Kind::Project, "project", "project", DATA_TYPE_DATA, nullptr, &Manager::getData),
        kind<tagTypeTable>(Kind::Type, "type", "type", DATA_TYPE_TYPE, nullptr, &Manager::getDataType,
            &Manager::getDataTypeByDataID),
        kind<tagKFImageTable>(Kind::Photo, "photo", "frame photograph", DATA_TYPE_KF_IMAGE, "框幅式影像", &Manager::getKFImage,
            &Manager::getKFImageByTypeID, &Manager::getKFImageByDataID, &Manager::getKFImageByDataAndMark),
        kind<tagSatTable>(Kind::Satellite, "sat", "satellite image", DATA_TYPE_SAT_IMAGE, "卫星影像", &Manager::getSatImage,
            &Manager::getSatImageByTypeID, &Manager::getSatImageByDataID, &Manager::getSatByDataAndMark),
        kind<tagAdsTable>(Kind::Ads, "ads", "three-line image", DATA_TYPE_ADS_IMAGE, "航空三线阵影像", &Manager::getAdsImage,
            &Manager::getAdsImageByTypeID, &Manager::getAdsImageByDataID, &Manager::getAdsByDataAndMark),
        kind<tagCtrlFileTable>(Kind::Control, "control", "control file", DATA_TYPE_CTRL_FILE, "控制点属性", &Manager::getCtrlFile,
            &Manager::getCtrlFileByTypeID, &Manager::getCtrlFileByDataID),
        kind<tagCtrlPointTable>(Kind::Point, "point", "control point", DATA_TYPE_CTRL_POINT, nullptr, &Manager::getCtrlPoint,
            &Manager::getCtrlPoint),
        kind<tagDemTable>(Kind::Dem, "dem", "DEM", DATA_TYPE_DEM, "DEM", &Manager::getDem,
            &Manager::getDemByTypeID, &Manager::getDemByDataID, &Manager::getDemByDataAndMark),
        kind<tagDsmTable>(Kind::Dsm, "dsm", "DSM", DATA_TYPE_DSM, "DSM", &Manager::getDsm,
            &Manager::getDsmByTypeID, &Manager::getDsmByDataID, &Manager::getDsmByDataAndMark),
        kind<tagDomTable>(Kind::Dom, "dom", "DOM", DATA_TYPE_DOM, "DOM", &Manager::getDom,
            &Manager::getDomByTypeID, &Manager::getDomByDataID, &Manager::getDomByDataAndMark),
        kind<tagDlgTable>(Kind::Dlg, "dlg", "DLG", DATA_TYPE_DLG, "DLG", &Manager::getDlg,
            &Manager::getDlgByTypeID, &Manager::getDlgByDataID, &Manager::getDlgByDataAndMark),
        {Kind::Disk, "disk", "disk", DATA_TYPE_DISK},
        {Kind::Folder, "folder", "folder", DATA_TYPE_FOLDER},
        {Kind::File, "file", "file", DATA_TYPE_FILE},
    };
    // clang-format on
    return *kKinds;
}

const RecordKind& kindOf(Record::Kind kind)
{
    return *std::find_if(recordKinds().begin(), recordKinds().end(),
                         [kind](const RecordKind& known) { return known.kind == kind; });
}

} // namespace internal

const Record::Value* Record::find(const std::string& name) const
{
    const auto field = std::find_if(m_Fields.begin(), m_Fields.end(),
                                    [&name](const Field& one) { return name == one.name; });
    return field == m_Fields.end() ? nullptr : &field->value;
}

unsigned int Record::firstNumber() const
{
    const auto* const number =
        m_Fields.empty() ? nullptr : std::get_if<unsigned int>(&m_Fields.front().value);
    return number == nullptr ? kNoIdentifier : *number;
}

std::vector<const char*> Record::fieldNames(Kind kind)
{
    std::vector<const char*> names;
    const auto empty = internal::kindOf(kind).empty;
    if (empty == nullptr)
        return names;
    const Record record = empty();
    for (const Field& field : record.fields())
        names.push_back(field.name);
    return names;
}

const char* Record::word(Kind kind)
{
    return internal::kindOf(kind).word;
}

std::optional<Record::Kind> Record::kindOf(const std::string& word)
{
    for (const internal::RecordKind& known : internal::recordKinds())
        if (word == known.word)
            return known.kind;
    return std::nullopt;
}

const std::vector<Record::Kind>& Record::imageKinds()
{
    static const auto* const kKinds = [] {
        auto* const kinds = new std::vector<Kind>;
        for (const internal::RecordKind& known : internal::recordKinds())
            if (known.one)
                kinds->push_back(known.kind);
        return kinds;
    }();
    return *kKinds;
}

} // namespace lumo
