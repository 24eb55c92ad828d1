#ifndef LUMO_CORE_TEXTLISTS_H
#define LUMO_CORE_TEXTLISTS_H

#include <QStringList>
#include <google/protobuf/repeated_ptr_field.h>

#include <string>

/// Appends UTF-8 texts of a message.
inline void appendTexts(QStringList& list, const google::protobuf::RepeatedPtrField<std::string>& texts)
{
    for (const std::string& text : texts)
        list.append(QString::fromStdString(text));
}

#endif
