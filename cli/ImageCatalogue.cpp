#include "cli/ImageCatalogue.h"

#include "cli/Connection.h"
#include "cli/ExitCode.h"

#include "lumo/core/LumoDataMgr.h"

#include <algorithm>
#include <charconv>

#include <strings.h>

namespace cli {

namespace {

std::optional<unsigned int> identifierOf(const std::string& text)
{
    unsigned int id = kNone;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, id);
    return error == std::errc() && stop == end && id != kNone ? std::optional(id) : std::nullopt;
}

[[noreturn]] void recordNotFound(const std::string& message)
{
    throw Failure(ExitCode::PlaceNotFound, message);
}

template <class Record>
using GetOne = ENUM_RET_TYPE (CLumoDataMgr::*)(unsigned int, Record&);
template <class Record>
using GetList = ENUM_RET_TYPE (CLumoDataMgr::*)(unsigned int, QList<Record>&);
template <class Record>
using GetMarked = ENUM_RET_TYPE (CLumoDataMgr::*)(unsigned int, unsigned int, QList<Record>&);

/// Nothing for no query.
template <class Record>
std::function<RecordList(Session&, unsigned int)> listBy(GetList<Record> get)
{
    if (get == nullptr)
        return {};
    return [get](Session& session, unsigned int parent) {
        QList<Record> records;
        answered(session, (session.manager.*get)(parent, records));
        return listOf(records);
    };
}

template <class Record>
std::function<RecordList(Session&, unsigned int, unsigned int)> listBy(GetMarked<Record> get)
{
    if (get == nullptr)
        return {};
    return [get](Session& session, unsigned int project, unsigned int mark) {
        QList<Record> records;
        answered(session, (session.manager.*get)(project, mark, records));
        return listOf(records);
    };
}

template <class Record>
Kind kind(const char* word, ENUM_DATA_TYPE number, const char* typeName, GetOne<Record> get,
          GetList<Record> getList, GetList<Record> getInProject, GetMarked<Record> getMarked)
{
    const auto find = [word, get](const std::string& text) -> FindRecord {
        const unsigned int id = parseIdentifier(text, word);
        return [word, get, id](Session& session) {
            auto record = markedRecord<Record>();
            if (!answered(session, (session.manager.*get)(id, record)))
                recordNotFound("the catalogue has no " + (word + (" " + std::to_string(id))));
            return listOfOne(record);
        };
    };
    return {word,
            number,
            typeName,
            find,
            listBy<Record>(getList),
            listBy<Record>(getInProject),
            listBy<Record>(getMarked)};
}

FindRecord findProjectNamed(const std::string& text)
{
    return [text](Session& session) { return listOfOne(findProject(session, text)); };
}

FindRecord findTypeNamed(const std::string& text)
{
    return [type = parseType(text)](Session& session) { return listOfOne(findType(session, type)); };
}

const std::vector<Kind>& kinds()
{
    using Manager = CLumoDataMgr;
    // clang-format off
    static const std::vector<Kind> kKinds = {
        {"project", DATA_TYPE_DATA, nullptr, findProjectNamed, {}, {}, {}},
        {"type", DATA_TYPE_TYPE, nullptr, findTypeNamed, listBy<tagTypeTable>(&Manager::getDataTypeByDataID), {}, {}},
        kind<tagKFImageTable>("photo", DATA_TYPE_KF_IMAGE, "框幅式影像", &Manager::getKFImage,
            &Manager::getKFImageByTypeID, &Manager::getKFImageByDataID, &Manager::getKFImageByDataAndMark),
        kind<tagSatTable>("sat", DATA_TYPE_SAT_IMAGE, "卫星影像", &Manager::getSatImage,
            &Manager::getSatImageByTypeID, &Manager::getSatImageByDataID, &Manager::getSatByDataAndMark),
        kind<tagAdsTable>("ads", DATA_TYPE_ADS_IMAGE, "航空三线阵影像", &Manager::getAdsImage,
            &Manager::getAdsImageByTypeID, &Manager::getAdsImageByDataID, &Manager::getAdsByDataAndMark),
        kind<tagCtrlFileTable>("control", DATA_TYPE_CTRL_FILE, "控制点属性", &Manager::getCtrlFile,
            &Manager::getCtrlFileByTypeID, &Manager::getCtrlFileByDataID, nullptr),
        kind<tagCtrlPointTable>("point", DATA_TYPE_CTRL_POINT, nullptr, &Manager::getCtrlPoint,
            &Manager::getCtrlPoint, nullptr, nullptr),
        kind<tagDemTable>("dem", DATA_TYPE_DEM, "DEM", &Manager::getDem,
            &Manager::getDemByTypeID, &Manager::getDemByDataID, &Manager::getDemByDataAndMark),
        kind<tagDsmTable>("dsm", DATA_TYPE_DSM, "DSM", &Manager::getDsm,
            &Manager::getDsmByTypeID, &Manager::getDsmByDataID, &Manager::getDsmByDataAndMark),
        kind<tagDomTable>("dom", DATA_TYPE_DOM, "DOM", &Manager::getDom,
            &Manager::getDomByTypeID, &Manager::getDomByDataID, &Manager::getDomByDataAndMark),
        kind<tagDlgTable>("dlg", DATA_TYPE_DLG, "DLG", &Manager::getDlg,
            &Manager::getDlgByTypeID, &Manager::getDlgByDataID, &Manager::getDlgByDataAndMark),
    };
    // clang-format on
    return kKinds;
}

} // namespace

bool isKind(const std::string& word)
{
    const auto named = [&word](const Kind& known) { return word == known.word; };
    return std::any_of(kinds().begin(), kinds().end(), named);
}

std::string kindWords(bool marked)
{
    std::string words;
    for (const Kind& known : kinds())
        if (!marked || known.listMarked)
            words += (words.empty() ? "" : ", ") + std::string(known.word);
    return words;
}

const Kind& kindNamed(const std::string& word)
{
    for (const Kind& known : kinds())
        if (word == known.word)
            return known;
    refuse("'" + word + "' is not a kind of record; the kinds are " + kindWords());
}

const Kind* kindOfType(const Text& typeName)
{
    for (const Kind& known : kinds())
        if (known.typeName != nullptr && typeName && strcasecmp(typeName->c_str(), known.typeName) == 0)
            return &known;
    return nullptr;
}

std::string decidingTypeNames()
{
    std::string names;
    for (const Kind& known : kinds())
        if (known.typeName != nullptr)
            names += (names.empty() ? "" : ", ") + std::string(known.typeName);
    return names;
}

bool answered(const Session& session, ENUM_RET_TYPE result)
{
    if (result == RET_FAILED)
        requestFailed(session.journal);
    return result != RET_NULL;
}

unsigned int parseIdentifier(const std::string& text, const std::string& what)
{
    const auto id = identifierOf(text);
    if (!id)
        refuse("'" + text + "' is not a " + what + " identifier: write its number");
    return *id;
}

tagDataTable findProject(Session& session, const std::string& project)
{
    const auto id = identifierOf(project);
    if (const auto known = id ? projectOf(session, *id) : std::nullopt)
        return *known;
    auto record = markedRecord<tagDataTable>();
    if (!answered(session, session.manager.getData(QString::fromStdString(project), record)))
        recordNotFound("the catalogue has no project '" + project + "'");
    return record;
}

std::optional<tagDataTable> projectOf(const Session& session, unsigned int projectID)
{
    auto record = markedRecord<tagDataTable>();
    return answered(session, session.manager.getData(projectID, record)) ? std::optional(record)
                                                                         : std::nullopt;
}

TypeName parseType(const std::string& text)
{
    TypeName type;
    const std::size_t slash = text.rfind('/');
    if (slash != std::string::npos) {
        type.project = text.substr(0, slash);
        type.name = text.substr(slash + 1);
    } else if (const auto id = identifierOf(text)) {
        type.id = *id;
    } else {
        refuse("'" + text + "' is not a type: write its number, or PROJECT/TYPENAME as in north/DEM");
    }
    return type;
}

tagTypeTable findType(Session& session, const TypeName& type)
{
    auto record = markedRecord<tagTypeTable>();
    if (type.id != kNone) {
        if (!answered(session, session.manager.getDataType(type.id, record)))
            recordNotFound("the catalogue has no type " + std::to_string(type.id));
        return record;
    }
    const tagDataTable project = findProject(session, type.project);
    if (!answered(session,
                  session.manager.getDataType(project.projectID, QString::fromStdString(type.name), record)))
        recordNotFound("project '" + type.project + "' has no type '" + type.name + "'");
    return record;
}

} // namespace cli
