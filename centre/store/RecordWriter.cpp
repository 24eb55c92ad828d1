#include "centre/store/RecordWriter.h"

#include "centre/base/Date.h"
#include "centre/base/Error.h"
#include "centre/base/Text.h"
#include "centre/database/Sql.h"
#include "centre/store/Ownership.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <locale.h>

namespace centre {

namespace {

const Sql kTypeName("SELECT data_type FROM type WHERE type_id = ?");
const Sql kAnyCompanyOf("SELECT id FROM company WHERE companyno = coalesce(?, companyno) LIMIT 2");
const Sql kAddMarkOfRecord("INSERT INTO image_mark VALUES (?, ?, ?) ON CONFLICT DO NOTHING");
const Sql kAddImageCommentOfMark(
    "INSERT INTO image_comment(id, commentcontent, commentstate)"
    " VALUES (CAST(:id AS BIGINT), 'mark ' || CAST(:id AS BIGINT), '') ON CONFLICT DO NOTHING");

constexpr double kTurn = 360;
constexpr std::uint32_t kNoIdentifier = 0xFFFFFFFF; // means "none" to the clients

std::string quoted(const std::string& text)
{
    return "'" + abbreviated(text) + "'";
}

std::uint32_t identifier(const std::string& key, const std::string& text)
{
    std::uint32_t value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end || value == 0 || value == kNoIdentifier)
        throw refusal(key + " must be a number from 1 to 4294967294, not " + quoted(text));
    return value;
}

double degrees(const std::string& key, const std::string& text)
{
    const double limit = key == "west" || key == "east" ? 180 : 90;
    double value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end || !(std::abs(value) <= limit))
        throw refusal(key + " must be a number of degrees from " +
                      (limit == 90 ? "-90 to 90" : "-180 to 180") + ", not " + quoted(text));
    return value;
}

std::string date(const std::string& key, const std::string& text)
{
    if (auto day = isoDate(text))
        return *day;
    throw refusal(key + " must be a day, YYYY-MM-DD, not " + quoted(text));
}

/// Whether the text starts with a number for the clients, which read it with these functions.
bool startsWithNumber(Content content, const std::string& text)
{
    static const locale_t neutral = ::newlocale(LC_ALL_MASK, "C", nullptr); // used for good
    char* end = nullptr;
    if (content == Content::Count)
        static_cast<void>(std::strtol(text.c_str(), &end, 10));
    else
        ::strtod_l(text.c_str(), &end, neutral);
    return end != text.c_str();
}

void requireReadable(const Column& column, const std::string& text)
{
    if (text.empty())
        return;
    const bool isNumber = column.content == Content::Number || column.content == Content::Count;
    if (isNumber && !startsWithNumber(column.content, text))
        throw refusal(column.key + " must be a number, not " + quoted(text));
    if (column.content != Content::Code)
        return;
    const std::vector<std::string>& known = codeTexts(column.name);
    if (std::find(known.begin(), known.end(), text) != known.end())
        return;
    std::string all;
    for (const std::string& each : known)
        all += (all.empty() ? "" : ", ") + each;
    throw refusal(column.key + " must be one of " + all + ", not " + quoted(text));
}

void bindText(Statement& statement, int place, const Column& column, const std::string& text)
{
    requireShort(text, column.key);
    if (column.content == Content::Name && (text.empty() || escaped(text) != text))
        throw refusal(column.key + " must be a name without control characters, not " + quoted(text));
    if (text.find('\0') != std::string::npos)
        throw refusal(column.key + " must be a text without the character 0, not " + quoted(text));
    statement.bindTextInPlace(place, text);
}

void bindValue(Statement& statement, int place, const Column& column, const std::string& text)
{
    switch (column.content) {
    case Content::Identifier:
        return statement.bind(place, identifier(column.key, text));
    case Content::Date:
        return statement.bind(place, date(column.key, text));
    case Content::Degrees:
        return statement.bind(place, degrees(column.key, text));
    default:
        return bindText(statement, place, column, text);
    }
}

bool emptyIsValue(Content content)
{
    return content != Content::Identifier && content != Content::Date && content != Content::Degrees;
}

/// East is not below west: what crosses the date line ends beyond 180.
struct Bounds
{
    double west;
    double south;
    double east;
    double north;
};

/// Returns the insertion of a record's columns from `first` on.
std::string insertionSql(const RecordKind& kind, std::size_t first)
{
    std::string names;
    std::string places;
    for (std::size_t i = first; i < kind.columns.size(); ++i) {
        names += (names.empty() ? "" : ", ") + kind.columns[i].name;
        places += places.empty() ? "?" : ", ?";
    }
    return "INSERT INTO " + kind.name + "(" + names + ") VALUES (" + places + ") RETURNING " +
           kind.idColumn();
}

} // namespace

/// Inserts records of one kind: its statements, and the texts of the current record.
class RecordWriter::Insertion
{
public:
    Insertion(Database& database, const RecordKind& kind, Origin origin)
        : m_Database(database), m_Kind(kind), m_Origin(origin), m_Texts(kind.columns.size() + kExtraSlots)
    {
        for (std::size_t i = 0; i < kind.columns.size(); ++i)
            m_Slots.emplace(kind.columns[i].key, i);
        if (m_Slots.count("coordExtra7") > 0)
            m_Slots.emplace("coordParam8", m_Slots["coordExtra7"]);
        if (kind.name == "project")
            m_Slots.emplace("company", kind.columns.size());
        if (kind.hasType() || kind.name == "point")
            m_Slots.emplace("marks", kind.columns.size() + 1);
        if (kind.hasType() && database.dialect().hasRowIds)
            m_AddBounds = database.prepare("INSERT INTO " + kind.name + "_bounds VALUES (?, ?, ?, ?, ?)");
    }

    void take(const RecordTexts& texts)
    {
        std::fill(m_Texts.begin(), m_Texts.end(), nullptr);
        for (const auto& [key, text] : texts) {
            const auto slot = m_Slots.find(key);
            if (slot == m_Slots.end())
                throw refusal("a record of kind " + m_Kind.name + " has no key " + quoted(key));
            const std::string*& known = m_Texts[slot->second];
            if (known && *known != text)
                throw refusal(key + " is given twice: " + quoted(*known) + " and " + quoted(text));
            if (!text.empty() || slot->second >= m_Kind.columns.size() ||
                emptyIsValue(m_Kind.columns[slot->second].content))
                known = &text;
        }
        if (m_Origin == Origin::User)
            requireFromUser();
    }

    /// Returns null if the record has no such text.
    const std::string* text(const std::string& key) const
    {
        const auto slot = m_Slots.find(key);
        return slot == m_Slots.end() ? nullptr : m_Texts[slot->second];
    }
    void setText(const std::string& key, const std::string& text) { m_Texts[m_Slots.at(key)] = &text; }

    std::optional<Bounds> bounds() const
    {
        if (!m_Kind.hasType())
            return std::nullopt;
        const std::string* texts[] = {text("west"), text("south"), text("east"), text("north")};
        const auto absent = std::count(std::begin(texts), std::end(texts), nullptr);
        if (absent == std::distance(std::begin(texts), std::end(texts)))
            return std::nullopt;
        if (absent > 0)
            throw refusal("bounds need all of west, south, east and north");
        Bounds bounds{degrees("west", *texts[0]), degrees("south", *texts[1]), degrees("east", *texts[2]),
                      degrees("north", *texts[3])};
        if (bounds.south > bounds.north)
            throw refusal("south " + *texts[1] + " is greater than north " + *texts[3]);
        if (bounds.east < bounds.west)
            bounds.east += kTurn;
        return bounds;
    }

    /// Returns the record's identifier.
    std::uint32_t run(const std::optional<Bounds>& bounds)
    {
        const bool isGiven = m_Texts.front() != nullptr;
        if (!isGiven)
            noteIdentifiers();
        const std::size_t first = isGiven ? 0 : 1;
        std::unique_ptr<Statement>& insert = m_Inserts[first];
        if (!insert)
            insert = m_Database.prepare(insertionSql(m_Kind, first));
        for (std::size_t i = first; i < m_Kind.columns.size(); ++i)
            bindColumn(*insert, static_cast<int>(i - first) + 1, i, bounds);
        const std::uint32_t id = insert->runForId().value();
        if (isGiven)
            m_LargestGiven = std::max(m_LargestGiven, id);
        return id;
    }

    /// Has the next identifiers follow those that the texts gave.
    void noteIdentifiers()
    {
        if (m_LargestGiven > 0)
            m_Database.noteIdentifier(m_Kind.name, m_Kind.idColumn(), m_LargestGiven);
        m_LargestGiven = 0;
    }

    void addBounds(const Bounds& bounds, std::uint32_t id)
    {
        if (!m_AddBounds)
            return;
        const ResetAtEnd resetAtEnd(*m_AddBounds);
        m_AddBounds->bindAll(id, bounds.west, bounds.east, bounds.south, bounds.north);
        m_AddBounds->run();
    }

private:
    static constexpr std::size_t kExtraSlots = 2; // company, marks

    void bindColumn(Statement& insert, int place, std::size_t i, const std::optional<Bounds>& bounds)
    {
        const Column& column = m_Kind.columns[i];
        if (bounds && column.key == "east")
            insert.bind(place, bounds->east);
        else if (m_Texts[i])
            bindValue(insert, place, column, *m_Texts[i]);
        else if (column.required)
            throw refusal(column.key + " is missing");
        else
            insert.bind(place, std::nullopt);
    }

    void requireFromUser() const
    {
        if (m_Texts.front())
            throw refusal(m_Kind.columns.front().key + " is given by the centre and can't be chosen");
        for (std::size_t i = 0; i < m_Kind.columns.size(); ++i)
            if (m_Texts[i])
                requireReadable(m_Kind.columns[i], *m_Texts[i]);
    }

    Database& m_Database;
    const RecordKind& m_Kind;
    const Origin m_Origin;
    std::uint32_t m_LargestGiven = 0;        ///< of the identifiers that texts gave since the last note
    std::unique_ptr<Statement> m_Inserts[2]; ///< with the identifier, and without
    std::unique_ptr<Statement> m_AddBounds;  ///< if bounds have a table of their own
    std::unordered_map<std::string, std::size_t> m_Slots; ///< columns by key, then the extra ones
    std::vector<const std::string*> m_Texts;              ///< by slot
};

RecordWriter::RecordWriter(Database& database, Origin origin, std::uint32_t companyId)
    : m_Database(database), m_Origin(origin), m_CompanyId(companyId)
{
}

RecordWriter::~RecordWriter() = default;

std::uint32_t RecordWriter::add(const RecordKind& kind, const RecordTexts& texts)
{
    Insertion& record = insertion(kind);
    record.take(texts);
    if (const std::string* type = record.text("typeID"); type && kind.hasType())
        requireOwner(kind, identifier("typeID", *type));
    std::string company;
    if (kind.name == "project" && !record.text("companyID")) {
        company = companyId(record.text("company"));
        record.setText("companyID", company);
    } else if (kind.name == "project" && record.text("company")) {
        throw refusal("give company or companyID, not both");
    }
    if (const std::string* name = record.text("dataType"))
        for (const RecordKind& each : recordKinds()) // a project must not have both "dom" and "DOM"
            if (owns(*name, each))
                record.setText("dataType", each.typeName);
    const std::optional<Bounds> bounds = record.bounds();
    std::uint32_t id = 0;
    try {
        id = record.run(bounds);
    } catch (const DatabaseError& error) {
        refuse(kind, record, error);
    }
    if (bounds)
        record.addBounds(*bounds, id);
    if (const std::string* marks = record.text("marks"))
        addMarks(kind, id, *marks);
    return id;
}

void RecordWriter::finish()
{
    for (const auto& [kind, insertion] : m_Insertions)
        insertion->noteIdentifiers();
    if (m_LargestMark > 0)
        m_Database.noteIdentifier("image_comment", "id", m_LargestMark);
}

RecordWriter::Insertion& RecordWriter::insertion(const RecordKind& kind)
{
    std::unique_ptr<Insertion>& known = m_Insertions[&kind];
    if (!known)
        known = std::make_unique<Insertion>(m_Database, kind, m_Origin);
    return *known;
}

void RecordWriter::requireOwner(const RecordKind& kind, std::uint32_t typeId)
{
    auto type = m_TypeNames.find(typeId);
    if (type == m_TypeNames.end()) {
        const auto row = m_Database.prepare(kTypeName);
        row->bind(1, typeId);
        if (!row->step())
            throw refusal("there is no type " + std::to_string(typeId));
        type = m_TypeNames.emplace(typeId, row->string(0)).first;
    }
    if (!owns(type->second, kind))
        throw refusal("type " + std::to_string(typeId) + " is " + type->second +
                      " and can't have records of kind " + kind.name + "; the type of these is " +
                      kind.typeName);
}

std::string RecordWriter::companyId(const std::string* companyNo)
{
    const auto row = m_Database.prepare(kAnyCompanyOf);
    companyNo ? row->bind(1, *companyNo) : row->bind(1, std::nullopt);
    if (!row->step())
        throw refusal("there is no company " + quoted(companyNo ? *companyNo : "") +
                      "; add-company adds one");
    std::string id = row->string(0);
    if (row->step())
        throw refusal("there are several companies: name one by company or companyID");
    return id;
}

/// Throws the reason why the database refused the record, in terms of its texts.
void RecordWriter::refuse(const RecordKind& kind, Insertion& insertion, const DatabaseError& error)
{
    using Problem = DatabaseError::Kind;
    if (error.kind() == Problem::PrimaryKey)
        throw refusal(kind.name + " " + *insertion.text(kind.columns.front().key) + " exists already");
    if (error.kind() == Problem::Unique)
        throw refusal(kind.name + " " + quoted(*insertion.text(kind.nameColumn()->key)) + " exists already");
    if (error.kind() == Problem::Check)
        throw refusal("no identifier is left for another " + kind.name);
    if (error.kind() != Problem::ForeignKey)
        throw error;
    for (const Column& column : kind.columns) {
        const std::string* text = insertion.text(column.key);
        if (column.references.empty() || !text)
            continue;
        const std::string& table = column.references;
        if (error.constraint() == kind.name + "_" + column.name + "_fkey")
            throw refusal("there is no " + table + " " + *text);
        if (!error.constraint().empty())
            continue;
        const RecordKind* other = findKind(table);
        const auto row = m_Database.prepare("SELECT 1 FROM " + table + " WHERE " +
                                            (other ? other->idColumn() : "id") + " = ?");
        row->bind(1, identifier(column.key, *text));
        if (!row->step())
            throw refusal("there is no " + table + " " + *text);
    }
    throw error;
}

void RecordWriter::addMarks(const RecordKind& kind, std::uint32_t id, const std::string& marks)
{
    if (!m_AddMark)
        m_AddMark = m_Database.prepare(kAddMarkOfRecord);
    for (std::size_t start = 0; start < marks.size();) {
        const std::size_t end = std::min(marks.find_first_of(", ", start), marks.size());
        const std::uint32_t mark = identifier("marks: each", marks.substr(start, end - start));
        requireImageComment(mark);
        const ResetAtEnd resetAtEnd(*m_AddMark);
        m_AddMark->bindAll(mark, static_cast<int>(kind.number), id);
        m_AddMark->run();
        start = end + 1;
    }
}

void RecordWriter::requireImageComment(std::uint32_t id)
{
    if (!m_ImageComments.insert(id).second)
        return;
    if (m_Origin == Origin::Operator) {
        const auto addition = m_Database.prepare(kAddImageCommentOfMark);
        addition->bind(1, id);
        addition->run();
        m_LargestMark = std::max(m_LargestMark, id);
        return;
    }
    const auto comment =
        m_Database.prepare("SELECT 1 FROM image_comment WHERE id = :id AND " + readableImageComment());
    comment->bindAll(id, m_CompanyId);
    if (!comment->step())
        throw refusal("marks: there is no image comment " + std::to_string(id));
}

} // namespace centre
