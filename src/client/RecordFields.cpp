#include "client/RecordFields.h"

#include "client/RecordText.h"
#include "lumo/core/LumoDataTypes.h"

#include <boost/preprocessor/arithmetic/inc.hpp>
#include <boost/preprocessor/cat.hpp>
#include <boost/preprocessor/repetition/repeat_from_to.hpp>
#include <boost/preprocessor/stringize.hpp>
#include <boost/preprocessor/tuple/elem.hpp>

namespace lumo::internal {

namespace {

using Value = Record::Value;

constexpr const char* kDatums[] = {"WGS 84", "Beijing 1954", "Xi'an 1980", "China 2000", "user defined"};
constexpr const char* kProjections[] = {"geographic", "transverse Mercator", "Gauss",
                                        "UTM",        "Lambert conformal",   "geocentric Cartesian"};
constexpr const char* kHemispheres[] = {"southern", "northern"};

/// Takes the fields of a record, each by the rule of its sort.
class FieldList
{
public:
    explicit FieldList(Record::Kind kind, unsigned int presence = 0) : m_Kind(kind), m_Presence(presence)
    {
        m_Fields.reserve(64);
    }

    void key(const char* name, unsigned int value)
    {
        m_Fields.push_back({name, value == kNoIdentifier ? Value(Record::Absent()) : Value(value),
                            Record::Field::Role::Leading});
    }

    template <std::size_t Size>
    void title(const char* name, const char (&value)[Size])
    {
        text(name, value, Size, Record::Field::Role::Leading);
    }

    template <std::size_t Size>
    void text(const char* name, const char (&value)[Size])
    {
        text(name, value, Size, Record::Field::Role::Main);
    }

    void text(const char* name, const char* value, std::size_t size, Record::Field::Role role)
    {
        Text text = textOf(value, size);
        m_Fields.push_back({name, text ? Value(std::move(*text)) : Value(Record::TooLong()), role});
    }

    /// The number of a presence bit; each call takes the next one.
    template <class Number>
    void optional(const char* name, Number value)
    {
        const bool present = (m_Presence >> m_Bit++ & 1) != 0;
        m_Fields.push_back(
            {name, present ? Value(value) : Value(Record::Absent()), Record::Field::Role::Main});
    }

    /// Whether the centre has sent it is not known.
    void number(const char* name, double value)
    {
        m_Fields.push_back({name, value, Record::Field::Role::Detail});
    }

    template <std::size_t Count>
    void code(const char* name, int value, const char* const (&meanings)[Count])
    {
        const bool known = value >= 0 && value < static_cast<int>(Count);
        m_Fields.push_back({name,
                            known ? Value(Record::Code{value, meanings[value]}) : Value(Record::Absent()),
                            Record::Field::Role::Main});
    }

    void coord(const tagCoordSetting& record);

    Record take() { return {m_Kind, std::move(m_Fields)}; }

private:
    Record::Kind m_Kind;
    std::vector<Record::Field> m_Fields;
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

template <class Source>
FieldList imageHead(Record::Kind kind, const Source& record)
{
    FieldList fields(kind, record.presence);
    fields.key(FIELD(imageID));
    fields.key(FIELD(mainFileID));
    fields.title(FIELD(imageName));
    return fields;
}

} // namespace

Record recordFrom(const tagDataTable& record)
{
    FieldList fields(Record::Kind::Project);
    fields.key(FIELD(projectID));
    fields.key(FIELD(companyID));
    fields.title(FIELD(projectName));
    SERIES(text, text, 1, 8);
    fields.coord(record.coord);
    return fields.take();
}

Record recordFrom(const tagTypeTable& record)
{
    constexpr std::size_t kUsedOfProjectName = 64;
    FieldList fields(Record::Kind::Type);
    fields.key(FIELD(typeID));
    fields.key(FIELD(projectID));
    fields.title(FIELD(dataType));
    fields.text("projectName", record.projectName, kUsedOfProjectName, Record::Field::Role::Main);
    fields.text(FIELD(typeText));
    return fields.take();
}

Record recordFrom(const tagKFImageTable& record)
{
    FieldList fields = imageHead(Record::Kind::Photo, record);
    SERIES(text, text, 1, 8);
    SERIES(optional, value, 1, 10);
    SERIES(optional, count, 1, 2);
    SERIES(optional, value, 11, 14);
    fields.coord(record.coord);
    return fields.take();
}

Record recordFrom(const tagSatTable& record)
{
    FieldList fields = imageHead(Record::Kind::Satellite, record);
    SERIES(text, text, 1, 7);
    SERIES(optional, value, 1, 6);
    SERIES(optional, count, 1, 2);
    SERIES(optional, value, 7, 12);
    fields.coord(record.coord);
    return fields.take();
}

Record recordFrom(const tagAdsTable& record)
{
    FieldList fields = imageHead(Record::Kind::Ads, record);
    SERIES(text, text, 1, 8);
    SERIES(optional, value, 1, 6);
    SERIES(optional, count, 1, 2);
    fields.coord(record.coord);
    return fields.take();
}

Record recordFrom(const tagCtrlFileTable& record)
{
    FieldList fields(Record::Kind::Control, record.presence);
    fields.key(FIELD(dqConID));
    fields.key(FIELD(mainFileID));
    fields.title(FIELD(ctrlFileName));
    SERIES(text, text, 1, 9);
    SERIES(optional, value, 1, 1);
    fields.coord(record.coord);
    return fields.take();
}

Record recordFrom(const tagCtrlPointTable& record)
{
    FieldList fields(Record::Kind::Point, record.presence);
    fields.key(FIELD(pointID));
    fields.key(FIELD(dqConID));
    fields.title(FIELD(conNumber));
    fields.text(FIELD(pointText));
    fields.optional(FIELD(pointX));
    fields.optional(FIELD(pointY));
    fields.optional(FIELD(pointZ));
    return fields.take();
}

Record recordFrom(const tagDemTable& record)
{
    FieldList fields = imageHead(Record::Kind::Dem, record);
    SERIES(text, text, 1, 16);
    SERIES(optional, value, 1, 13);
    SERIES(optional, count, 1, 4);
    SERIES(optional, value, 14, 14);
    SERIES(optional, count, 5, 6);
    fields.coord(record.coord);
    return fields.take();
}

Record recordFrom(const tagDsmTable& record)
{
    FieldList fields = imageHead(Record::Kind::Dsm, record);
    SERIES(text, text, 1, 9);
    SERIES(optional, value, 1, 10);
    SERIES(optional, count, 1, 5);
    fields.coord(record.coord);
    return fields.take();
}

Record recordFrom(const tagDomTable& record)
{
    FieldList fields = imageHead(Record::Kind::Dom, record);
    SERIES(text, text, 1, 18);
    SERIES(optional, value, 1, 10);
    SERIES(optional, count, 1, 8);
    fields.coord(record.coord);
    return fields.take();
}

Record recordFrom(const tagDlgTable& record)
{
    FieldList fields = imageHead(Record::Kind::Dlg, record);
    SERIES(text, text, 1, 17);
    SERIES(optional, value, 1, 10);
    SERIES(optional, count, 1, 10);
    fields.coord(record.coord);
    return fields.take();
}

Record recordFrom(const tagImageData& record)
{
    switch (record.recordKind) {
    case DATA_TYPE_DATA:
        return recordFrom(record.body.data);
    case DATA_TYPE_TYPE:
        return recordFrom(record.body.type);
    case DATA_TYPE_KF_IMAGE:
        return recordFrom(record.body.kfImage);
    case DATA_TYPE_SAT_IMAGE:
        return recordFrom(record.body.satImage);
    case DATA_TYPE_ADS_IMAGE:
        return recordFrom(record.body.adsImage);
    case DATA_TYPE_CTRL_POINT:
        return recordFrom(record.body.ctrlPoint);
    case DATA_TYPE_DEM:
        return recordFrom(record.body.dem);
    case DATA_TYPE_DSM:
        return recordFrom(record.body.dsm);
    case DATA_TYPE_DOM:
        return recordFrom(record.body.dom);
    case DATA_TYPE_DLG:
        return recordFrom(record.body.dlg);
    default:
        return {Record::Kind::File, {}};
    }
}

} // namespace lumo::internal
