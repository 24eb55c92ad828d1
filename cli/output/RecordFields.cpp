#include "cli/output/RecordFields.h"

#include "cli/output/Records.h"

#include "lumo/core/TextEncoding.h"

#include <boost/preprocessor/arithmetic/inc.hpp>
#include <boost/preprocessor/cat.hpp>
#include <boost/preprocessor/repetition/repeat_from_to.hpp>
#include <boost/preprocessor/stringize.hpp>
#include <boost/preprocessor/tuple/elem.hpp>

#include <charconv>

namespace cli {

namespace {

constexpr const char* kDatums[] = {"WGS 84", "Beijing 1954", "Xi'an 1980", "China 2000", "user defined"};
constexpr const char* kProjections[] = {"geographic", "transverse Mercator", "Gauss",
                                        "UTM",        "Lambert conformal",   "geocentric Cartesian"};
constexpr const char* kHemispheres[] = {"southern", "northern"};

/// Takes the fields of a record, each by the rule of its sort.
class FieldList
{
public:
    explicit FieldList(unsigned int presence = 0) : m_Presence(presence) { m_Fields.reserve(64); }

    void key(const char* name, unsigned int value)
    {
        m_Fields.push_back({name, value == kNone ? Value(Absent()) : Value(value), Field::Role::Leading});
    }

    template <std::size_t Size>
    void title(const char* name, const char (&value)[Size])
    {
        m_Fields.push_back({name, recordText(value), Field::Role::Leading});
    }

    void text(const char* name, RecordText value) { m_Fields.push_back({name, value, Field::Role::Main}); }

    template <std::size_t Size>
    void text(const char* name, const char (&value)[Size])
    {
        text(name, recordText(value));
    }

    /// The number of a presence bit; each call takes the next one.
    template <class Number>
    void optional(const char* name, Number value)
    {
        const bool present = (m_Presence >> m_Bit++ & 1) != 0;
        m_Fields.push_back({name, present ? Value(value) : Value(Absent()), Field::Role::Main});
    }

    /// Whether the centre has sent it is not known.
    void number(const char* name, double value) { m_Fields.push_back({name, value, Field::Role::Detail}); }

    template <std::size_t Count>
    void code(const char* name, int value, const char* const (&meanings)[Count])
    {
        const bool known = value >= 0 && value < static_cast<int>(Count);
        m_Fields.push_back(
            {name, known ? Value(Code{value, meanings[value]}) : Value(Absent()), Field::Role::Main});
    }

    void coord(const tagCoordSetting& record);

    Fields take() { return std::move(m_Fields); }

private:
    Fields m_Fields;
    unsigned int m_Presence;
    unsigned int m_Bit = 0;
};

// FIELD(imageID) is "imageID", record.imageID; SERIES(text, text, 1, 3) is text(FIELD(text1)) to
// text(FIELD(text3)).
#define FIELD(field) #field, record.field
#define NUMBERED(verb, field) fields.verb(BOOST_PP_STRINGIZE(field), record.field)
#define ONE_OF_SERIES(z, number, series)                                                                     \
    NUMBERED(BOOST_PP_TUPLE_ELEM(0, series), BOOST_PP_CAT(BOOST_PP_TUPLE_ELEM(1, series), number));
#define SERIES(verb, stem, first, last)                                                                      \
    BOOST_PP_REPEAT_FROM_TO(first, BOOST_PP_INC(last), ONE_OF_SERIES, (verb, stem))

void FieldList::coord(const tagCoordSetting& record)
{
    FieldList& fields = *this;
    fields.code(FIELD(datum), kDatums);
    fields.code(FIELD(projection), kProjections);
    SERIES(number, coordParam, 1, 8);
    fields.code(FIELD(hemisphere), kHemispheres);
    fields.text(FIELD(coordText));
    SERIES(number, coordExtra, 1, 7);
}

template <class Record>
FieldList imageHead(const Record& record)
{
    FieldList fields(record.presence);
    fields.key(FIELD(imageID));
    fields.key(FIELD(mainFileID));
    fields.title(FIELD(imageName));
    return fields;
}

template <class Number>
std::string digits(Number number)
{
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

template <class... Functions>
struct Overloaded : Functions...
{
    using Functions::operator()...;
};
template <class... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

} // namespace

Fields fieldsOf(const tagDataTable& record)
{
    FieldList fields;
    fields.key(FIELD(projectID));
    fields.key(FIELD(companyID));
    fields.title(FIELD(projectName));
    SERIES(text, text, 1, 8);
    fields.coord(record.coord);
    return fields.take();
}

Fields fieldsOf(const tagTypeTable& record)
{
    constexpr std::size_t kUsedOfProjectName = 64;
    FieldList fields;
    fields.key(FIELD(typeID));
    fields.key(FIELD(projectID));
    fields.title(FIELD(dataType));
    fields.text("projectName", RecordText{record.projectName, kUsedOfProjectName});
    fields.text(FIELD(typeText));
    return fields.take();
}

Fields fieldsOf(const tagKFImageTable& record)
{
    FieldList fields = imageHead(record);
    SERIES(text, text, 1, 8);
    SERIES(optional, value, 1, 10);
    SERIES(optional, count, 1, 2);
    SERIES(optional, value, 11, 14);
    fields.coord(record.coord);
    return fields.take();
}

Fields fieldsOf(const tagSatTable& record)
{
    FieldList fields = imageHead(record);
    SERIES(text, text, 1, 7);
    SERIES(optional, value, 1, 6);
    SERIES(optional, count, 1, 2);
    SERIES(optional, value, 7, 12);
    fields.coord(record.coord);
    return fields.take();
}

Fields fieldsOf(const tagAdsTable& record)
{
    FieldList fields = imageHead(record);
    SERIES(text, text, 1, 8);
    SERIES(optional, value, 1, 6);
    SERIES(optional, count, 1, 2);
    fields.coord(record.coord);
    return fields.take();
}

Fields fieldsOf(const tagCtrlFileTable& record)
{
    FieldList fields(record.presence);
    fields.key(FIELD(dqConID));
    fields.key(FIELD(mainFileID));
    fields.title(FIELD(ctrlFileName));
    SERIES(text, text, 1, 9);
    SERIES(optional, value, 1, 1);
    fields.coord(record.coord);
    return fields.take();
}

Fields fieldsOf(const tagCtrlPointTable& record)
{
    FieldList fields(record.presence);
    fields.key(FIELD(pointID));
    fields.key(FIELD(dqConID));
    fields.title(FIELD(conNumber));
    fields.text(FIELD(pointText));
    fields.optional(FIELD(pointX));
    fields.optional(FIELD(pointY));
    fields.optional(FIELD(pointZ));
    return fields.take();
}

Fields fieldsOf(const tagDemTable& record)
{
    FieldList fields = imageHead(record);
    SERIES(text, text, 1, 16);
    SERIES(optional, value, 1, 13);
    SERIES(optional, count, 1, 4);
    SERIES(optional, value, 14, 14);
    SERIES(optional, count, 5, 6);
    fields.coord(record.coord);
    return fields.take();
}

Fields fieldsOf(const tagDsmTable& record)
{
    FieldList fields = imageHead(record);
    SERIES(text, text, 1, 9);
    SERIES(optional, value, 1, 10);
    SERIES(optional, count, 1, 5);
    fields.coord(record.coord);
    return fields.take();
}

Fields fieldsOf(const tagDomTable& record)
{
    FieldList fields = imageHead(record);
    SERIES(text, text, 1, 18);
    SERIES(optional, value, 1, 10);
    SERIES(optional, count, 1, 8);
    fields.coord(record.coord);
    return fields.take();
}

Fields fieldsOf(const tagDlgTable& record)
{
    FieldList fields = imageHead(record);
    SERIES(text, text, 1, 17);
    SERIES(optional, value, 1, 10);
    SERIES(optional, count, 1, 10);
    fields.coord(record.coord);
    return fields.take();
}

Fields fieldsOf(const tagImageData& record)
{
    switch (record.recordKind) {
    case DATA_TYPE_DATA:
        return fieldsOf(record.body.data);
    case DATA_TYPE_TYPE:
        return fieldsOf(record.body.type);
    case DATA_TYPE_KF_IMAGE:
        return fieldsOf(record.body.kfImage);
    case DATA_TYPE_SAT_IMAGE:
        return fieldsOf(record.body.satImage);
    case DATA_TYPE_ADS_IMAGE:
        return fieldsOf(record.body.adsImage);
    case DATA_TYPE_CTRL_POINT:
        return fieldsOf(record.body.ctrlPoint);
    case DATA_TYPE_DEM:
        return fieldsOf(record.body.dem);
    case DATA_TYPE_DSM:
        return fieldsOf(record.body.dsm);
    case DATA_TYPE_DOM:
        return fieldsOf(record.body.dom);
    case DATA_TYPE_DLG:
        return fieldsOf(record.body.dlg);
    default:
        return {};
    }
}

Text textOf(const RecordText& text)
{
    return text.bytes[text.capacity - 1] != '\0' ? Text() : Text(convertToUtf8(text.bytes));
}

std::string shown(const Value& value)
{
    return std::visit(
        Overloaded{[](Absent) { return std::string("-"); },
                   [](const RecordText& text) { return shownText(textOf(text)); },
                   [](const Code& code) { return digits(code.value) + " (" + code.meaning + ")"; },
                   [](auto number) { return digits(number); }},
        value);
}

Json jsonOf(const Value& value)
{
    return std::visit(Overloaded{[](Absent) { return Json(nullptr); },
                                 [](const RecordText& text) { return textJson(textOf(text)); },
                                 [](const Code& code) { return Json(code.value); },
                                 [](auto number) { return Json(number); }},
                      value);
}

std::string plain(const Value& value)
{
    return std::visit(Overloaded{[](Absent) { return std::string(); },
                                 [](const RecordText& text) { return textOf(text).value_or(""); },
                                 [](const Code& code) { return digits(code.value); },
                                 [](auto number) { return digits(number); }},
                      value);
}

} // namespace cli
