#ifndef LUMO_CATALOG_RECORDQUERIES_H
#define LUMO_CATALOG_RECORDQUERIES_H

#include "catalog/RecordKinds.h"
#include "core/CallFrame.h"

#include <cstring>

/// The queries that all kinds of records have in common. `frame` is the one that the method has opened.
namespace recordqueries {

using ledgerserver::DataUtilBeanReq;

/// An operation of the catalogue service that answers records of a kind.
template <class Record>
using Operation =
    Rpc<ledgerserver::LedgerServices_Stub, DataUtilBeanReq, typename RecordKind<Record>::Response>;

/// Appends the records of answers, by way of one record for the whole query.
template <class Record>
auto appendTo(QList<Record>& records)
{
    return [&records, record = Record()](const typename RecordKind<Record>::Response& response) mutable {
        for (const auto& bean : RecordKind<Record>::beans(response)) {
            RecordKind<Record>::convert(bean, record);
            records.append(record);
        }
        return RecordKind<Record>::beans(response).size();
    };
}

/// The same for a list that may hold several kinds.
template <class Record>
auto appendTo(QList<tagImageData>& images)
{
    tagImageData image;
    std::memset(&image, 0, sizeof image);
    image.recordKind = ImageDataMember<Record>::recordKind;
    return [&images, image](const typename RecordKind<Record>::Response& response) mutable {
        for (const auto& bean : RecordKind<Record>::beans(response)) {
            RecordKind<Record>::convert(bean, ImageDataMember<Record>::of(image));
            images.append(image);
        }
        return RecordKind<Record>::beans(response).size();
    };
}

/// The answer's bean, or the default one where there is none.
template <class Record>
ENUM_RET_TYPE single(CallFrame& frame, const Operation<Record>& operation, const DataUtilBeanReq& request,
                     Record& record)
{
    return frame.ask(operation, request, verdicts::found,
                     [&](const typename RecordKind<Record>::Response& response) {
                         RecordKind<Record>::convert(response.bean(), record);
                     });
}

/// The same for the record of an identifier.
template <class Record>
ENUM_RET_TYPE single(CallFrame& frame, const Operation<Record>& operation, unsigned int id, Record& record)
{
    DataUtilBeanReq request;
    request.set_record_id(static_cast<int>(id));
    return single(frame, operation, request, record);
}

/// `Element` is Record or tagImageData.
template <class Record, class Element>
ENUM_RET_TYPE byType(CallFrame& frame, const Operation<Record>& total, const Operation<Record>& page,
                     unsigned int typeId, QList<Element>& records)
{
    DataUtilBeanReq request;
    request.set_type_id(static_cast<int>(typeId));
    return frame.pages(total, page, request, records, appendTo<Record>(records));
}

template <class Record>
ENUM_RET_TYPE byProject(CallFrame& frame, const Operation<Record>& total, const Operation<Record>& page,
                        unsigned int dataId, QList<Record>& records)
{
    DataUtilBeanReq request;
    request.set_project_id(static_cast<int>(dataId));
    return frame.pages(total, page, request, records, appendTo<Record>(records));
}

/// An answer that is not a success empties the list; a call that fails leaves it.
template <class Record>
ENUM_RET_TYPE byProjectAndMark(CallFrame& frame, const Operation<Record>& operation, unsigned int dataId,
                               unsigned int mark, QList<Record>& records)
{
    DataUtilBeanReq request;
    request.set_project_id(static_cast<int>(dataId));
    request.set_comm_id(static_cast<int>(mark));
    return frame.list(operation, request, records, appendTo<Record>(records));
}

/// The verdict of a list of which the first record counts: a success has result 0 and a record.
template <class Record>
struct HasRecord
{
    using Outcome = bool;
    Judgement operator()(const typename RecordKind<Record>::Response& response) const
    {
        return response.result() == 0 && !RecordKind<Record>::beans(response).empty() ? Judgement::Success
                                                                                      : Judgement::Error;
    }
};

/// The first record of the answer's list. An empty list is a failure.
template <class Record>
bool firstOf(CallFrame& frame, const Operation<Record>& operation, const DataUtilBeanReq& request,
             Record& record)
{
    return frame.ask(operation, request, HasRecord<Record>(),
                     [&](const typename RecordKind<Record>::Response& response) {
                         RecordKind<Record>::convert(RecordKind<Record>::beans(response)[0], record);
                     });
}

} // namespace recordqueries

#endif
