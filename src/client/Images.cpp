#include "lumo/client/Images.h"

#include "client/Link.h"
#include "client/RecordFields.h"
#include "client/RecordKinds.h"
#include "client/RecordText.h"
#include "lumo/core/LumoDataMgr.h"

#include <charconv>

#include <strings.h>

namespace lumo {

using internal::Call;
using internal::notFound;

namespace {

std::optional<unsigned int> numberOf(const std::string& text)
{
    unsigned int number = kNoIdentifier;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end && number != kNoIdentifier ? std::optional(number)
                                                                          : std::nullopt;
}

std::string nameOf(const Record& record, const char* field)
{
    return record.get<std::string>(field).value_or("");
}

} // namespace

Images::Images(std::shared_ptr<internal::Link> link) : m_Link(std::move(link))
{
}

std::vector<Record> Images::projects() const
{
    const Call call(*m_Link);
    QList<tagDataTable> sources;
    call.requireWhole(call->getData(sources));
    return internal::recordsFrom(std::move(sources));
}

Record Images::project(ProjectId id) const
{
    return record(Kind::Project, RecordId(id.number()));
}

Record Images::project(const std::string& name) const
{
    const Call call(*m_Link);
    if (const auto number = numberOf(name))
        if (auto known = internal::kindOf(Kind::Project).one(call, *number))
            return *std::move(known);
    auto source = internal::markedRecord<tagDataTable>();
    if (!call.answered(call->getData(QString::fromStdString(name), source)))
        notFound("the catalogue has no project '" + name + "'");
    return internal::recordFrom(source);
}

std::vector<Record> Images::types(ProjectId project) const
{
    return internal::kindOf(Kind::Type).below(Call(*m_Link), project.number());
}

Record Images::type(TypeId id) const
{
    return record(Kind::Type, RecordId(id.number()));
}

Record Images::type(ProjectId project, const std::string& name) const
{
    const Call call(*m_Link);
    auto source = internal::markedRecord<tagTypeTable>();
    if (!call.answered(call->getDataType(project.number(), QString::fromStdString(name), source)))
        notFound("project " + std::to_string(project.number()) + " has no type '" + name + "'");
    return internal::recordFrom(source);
}

Record Images::type(const std::string& name) const
{
    checkTypeName(name);
    const std::size_t slash = name.rfind('/');
    return slash == std::string::npos
               ? type(TypeId(*numberOf(name)))
               : type(project(name.substr(0, slash)).projectId(), name.substr(slash + 1));
}

void Images::checkTypeName(const std::string& name)
{
    if (name.find('/') == std::string::npos && !numberOf(name)) {
        internal::refuse("'" + name +
                         "' is not a type: write its number, or PROJECT/TYPENAME as in north/DEM");
    }
}

std::optional<Record::Kind> Images::kindOfType(const Record& type)
{
    const std::string name = nameOf(type, "dataType");
    for (const internal::RecordKind& known : internal::recordKinds())
        if (known.typeName != nullptr && strcasecmp(name.c_str(), known.typeName) == 0)
            return known.kind;
    return std::nullopt;
}

std::vector<std::string> Images::decidingNames()
{
    std::vector<std::string> names;
    for (const internal::RecordKind& known : internal::recordKinds())
        if (known.typeName != nullptr)
            names.emplace_back(known.typeName);
    return names;
}

Record Images::record(Kind kind, RecordId id) const
{
    const internal::RecordKind& known = internal::kindOf(kind);
    if (!known.one)
        internal::refuse(std::string("a ") + known.name + " is not a record of the image catalogue");
    auto record = known.one(Call(*m_Link), id.number());
    if (!record)
        notFound(std::string("the catalogue has no ") + known.name + " " + std::to_string(id.number()));
    return *std::move(record);
}

std::vector<Record> Images::records(const Record& type) const
{
    const auto kind = kindOfType(type);
    if (!kind) {
        std::string names;
        for (const std::string& name : decidingNames())
            names += (names.empty() ? "" : ", ") + name;
        internal::refuse("the type is named '" + nameOf(type, "dataType") +
                         "', which does not decide the kind of its records; the names that do are " + names);
    }
    return internal::kindOf(*kind).below(Call(*m_Link), type.typeId().number());
}

std::vector<Record> Images::records(Kind kind, ProjectId project, CommentId mark) const
{
    checkList(kind, mark.isSet());
    const internal::RecordKind& known = internal::kindOf(kind);
    const Call call(*m_Link);
    return mark.isSet() ? known.markedInProject(call, project.number(), mark.number())
                        : known.inProject(call, project.number());
}

bool Images::canList(Kind kind)
{
    return internal::kindOf(kind).inProject != nullptr;
}

bool Images::canBeMarked(Kind kind)
{
    return internal::kindOf(kind).markedInProject != nullptr;
}

void Images::checkList(Kind kind, bool marked)
{
    if (marked ? !canBeMarked(kind) : !canList(kind)) {
        internal::refuse(std::string("there is no list of the ") + Record::word(kind) +
                         " records of a project" + (marked ? " that have a mark" : ""));
    }
}

std::vector<Record> Images::points(RecordId control) const
{
    return internal::kindOf(Kind::Point).below(Call(*m_Link), control.number());
}

void Images::link(ProjectId project, const Entry& entry) const
{
    const bool file = entry.kind == Entry::Kind::File;
    const unsigned int id = file ? entry.file.number() : Catalogue(m_Link).folderOf(entry).number();
    const Call call(*m_Link);
    call.require(file ? call->linkDataFile(project.number(), id)
                      : call->linkDataFolder(project.number(), id));
}

void Images::unlink(ProjectId project, const Entry& entry) const
{
    const bool file = entry.kind == Entry::Kind::File;
    const unsigned int id = file ? entry.file.number() : Catalogue(m_Link).folderOf(entry).number();
    const Call call(*m_Link);
    const bool done =
        file ? call->unlinkDataFile(project.number(), id) : call->unlinkDataFolder(project.number(), id);
    // The library returns the same for an error of the centre and a link that is not there.
    if (!done && Call::refused())
        notFound("'" + entry.name.value_or("") + "' is not linked to project " +
                 std::to_string(project.number()));
    call.require(done);
}

Record Images::projectOf(const Entry& entry) const
{
    const bool file = entry.kind == Entry::Kind::File;
    const unsigned int id = file ? entry.file.number() : Catalogue(m_Link).folderOf(entry).number();
    const Call call(*m_Link);
    auto source = internal::markedRecord<tagDataTable>();
    const bool linked = file ? call->getDataByFile(id, source) : call->getDataByFolder(id, source);
    // The library returns the same for an error of the centre and an entry without a project.
    if (!linked && Call::refused())
        notFound("'" + entry.name.value_or("") + "' is not linked to a project");
    call.require(linked);
    return internal::recordFrom(source);
}

} // namespace lumo
