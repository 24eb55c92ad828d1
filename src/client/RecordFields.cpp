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
        Entry::Text text = textOf(value, size);
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

// LUMO_FIELD(imageID) is "imageID", record.imageID; LUMO_SERIES(text, text, 1, 3) is text(LUMO_FIELD(text1))
// to text(LUMO_FIELD(text3)).
#define LUMO_FIELD(field) #field, record.field
#define LUMO_NUMBERED(verb, field) fields.verb(BOOST_PP_STRINGIZE(field), record.field)
#define LUMO_ONE_OF_SERIES(z, number, series)                                                                \
    LUMO_NUMBERED(BOOST_PP_TUPLE_ELEM(0, series), BOOST_PP_CAT(BOOST_PP_TUPLE_ELEM(1, series), number));
#define LUMO_SERIES(verb, stem, first, last)                                                                 \
    BOOST_PP_REPEAT_FROM_TO(first, BOOST_PP_INC(last), LUMO_ONE_OF_SERIES, (verb, stem))

void FieldList::coord(const tagCoordSetting& record)
{
    FieldList& fields = *this;
    fields.code(LUMO_FIELD(datum), kDatums);
    fields.code(LUMO_FIELD(projection), kProjections);
    LUMO_SERIES(number, coordParam, 1, 8);
    fields.code(LUMO_FIELD(hemisphere), kHemispheres);
    fields.text(LUMO_FIELD(coordText));
    LUMO_SERIES(number, coordExtra, 1, 7);
}

template <class Source>
FieldList imageHead(Record::Kind kind, const Source& record)
{
    FieldList fields(kind, record.presence);
    fields.key(LUMO_FIELD(imageID));
    fields.key(LUMO_FIELD(mainFileID));
    fields.title(LUMO_FIELD(imageName));
    return fields;
}

} // namespace

Record recordFrom(const tagDataTable& record)
{
    FieldList fields(Record::Kind::Project);
    fields.key(LUMO_FIELD(projectID));
    fields.key(LUMO_FIELD(companyID));
    fields.title(LUMO_FIELD(projectName));
    LUMO_SERIES(text, text, 1, 8);
    fields.coord(record.coord);
    return fields.take();
}

Record recordFrom(const tagTypeTable& record)
{
    constexpr std::size_t kUsedOfProjectName = 64;
    FieldList fields(Record::Kind::Type);
    fields.key(LUMO_FIELD(typeID));
    fields.key(LUMO_FIELD(projectID));
    fields.title(LUMO_FIELD(dataType));
    fields.text("projectName", record.projectName, kUsedOfProjectName, Record::Field::Role::Main);
    fields.text(LUMO_FIELD(typeText));
    return fields.take();
}

Record recordFrom(const tagKFImageTable& record)
{
    FieldList fields = imageHead(Record::Kind::Photo, record);
    LUMO_SERIES(text, text, 1, 8);
    LUMO_SERIES(optional, value, 1, 10);
    LUMO_SERIES(optional, count, 1, 2);
    LUMO_SERIES(optional, value, 11, 14);
    fields.coord(record.coord);
    return fields.take();
}

Record recordFrom(const tagSatTable& record)
{
    FieldList fields = imageHead(Record::Kind::Satellite, record);
    LUMO_SERIES(text, text, 1, 7);
    LUMO_SERIES(optional, value, 1, 6);
    LUMO_SERIES(optional, count, 1, 2);
    LUMO_SERIES(optional, value, 7, 12);
    fields.coord(record.coord);
    return fields.take();
}

Record recordFrom(const tagAdsTable& record)
{
    FieldList fields = imageHead(Record::Kind::Ads, record);
    LUMO_SERIES(text, text, 1, 8);
    LUMO_SERIES(optional, value, 1, 6);
    LUMO_SERIES(optional, count, 1, 2);
    fields.coord(record.coord);
    return fields.take();
}

Record recordFrom(const tagCtrlFileTable& record)
{
    FieldList fields(Record::Kind::Control, record.presence);
    fields.key(LUMO_FIELD(dqConID));
    fields.key(LUMO_FIELD(mainFileID));
    fields.title(LUMO_FIELD(ctrlFileName));
    LUMO_SERIES(text, text, 1, 9);
    LUMO_SERIES(optional, value, 1, 1);
    fields.coord(record.coord);
    return fields.take();
}

Record recordFrom(const tagCtrlPointTable& record)
{
    FieldList fields(Record::Kind::Point, record.presence);
    fields.key(LUMO_FIELD(pointID));
    fields.key(LUMO_FIELD(dqConID));
    fields.title(LUMO_FIELD(conNumber));
    fields.text(LUMO_FIELD(pointText));
    fields.optional(LUMO_FIELD(pointX));
    fields.optional(LUMO_FIELD(pointY));
    fields.optional(LUMO_FIELD(pointZ));
    return fields.take();
}

Record recordFrom(const tagDemTable& record)
{
    FieldList fields = imageHead(Record::Kind::Dem, record);
    LUMO_SERIES(text, text, 1, 16);
    LUMO_SERIES(optional, value, 1, 13);
    LUMO_SERIES(optional, count, 1, 4);
    LUMO_SERIES(optional, value, 14, 14);
    LUMO_SERIES(optional, count, 5, 6);
    fields.coord(record.coord);
    return fields.take();
}

Record recordFrom(const tagDsmTable& record)
{
    FieldList fields = imageHead(Record::Kind::Dsm, record);
    LUMO_SERIES(text, text, 1, 9);
    LUMO_SERIES(optional, value, 1, 10);
    LUMO_SERIES(optional, count, 1, 5);
    fields.coord(record.coord);
    return fields.take();
}

Record recordFrom(const tagDomTable& record)
{
    FieldList fields = imageHead(Record::Kind::Dom, record);
    LUMO_SERIES(text, text, 1, 18);
    LUMO_SERIES(optional, value, 1, 10);
    LUMO_SERIES(optional, count, 1, 8);
    fields.coord(record.coord);
    return fields.take();
}

Record recordFrom(const tagDlgTable& record)
{
    FieldList fields = imageHead(Record::Kind::Dlg, record);
    LUMO_SERIES(text, text, 1, 17);
    LUMO_SERIES(optional, value, 1, 10);
    LUMO_SERIES(optional, count, 1, 10);
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

#undef LUMO_FIELD
#undef LUMO_NUMBERED
#undef LUMO_ONE_OF_SERIES
#undef LUMO_SERIES

} // namespace lumo::internal
