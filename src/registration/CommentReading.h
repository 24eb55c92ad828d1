#ifndef LUMO_REGISTRATION_COMMENTREADING_H
#define LUMO_REGISTRATION_COMMENTREADING_H

#include "catalog/FieldRules.h"
#include "lumo/registration/CommentRecords.h"

#include <QList>
#include <QString>

#include <type_traits>

/// What comments and image comments have in common: their beans have the same fields.
namespace commentreading {

static_assert(std::is_trivially_copyable<tagCommentInfo>::value, "records are copied whole");

template <class Bean>
void convert(const Bean& bean, tagCommentInfo& info)
{
    fieldrules::key(info.id, LUMO_FIELD(id));
    fieldrules::text(info.content, LUMO_FIELD(commentcontent));
    fieldrules::text(info.state, LUMO_FIELD(commentstate));
}

/// Takes the texts of an answer's bean, empty ones where it has none.
inline auto into(QString& content, QString& state)
{
    return [&](const auto& response) {
        content = QString::fromStdString(response.bean().commentcontent());
        state = QString::fromStdString(response.bean().commentstate());
    };
}

/// Appends all comments, by way of one record.
template <class Beans, class Convert>
void append(QList<tagCommentInfo>& comments, const Beans& beans, Convert convert)
{
    tagCommentInfo info = {};
    for (const auto& bean : beans) {
        convert(bean, info);
        comments.append(info);
    }
}

} // namespace commentreading

#endif
