#ifndef LUMO_CORE_READERS_H
#define LUMO_CORE_READERS_H

#include <QString>
#include <QStringList>
#include <google/protobuf/repeated_ptr_field.h>

#include <string>

/// Readers of CallFrame::ask that several rooms use. A reader takes what it wants from a response.
namespace readers {

/// Reads nothing.
inline auto nothing()
{
    return [](const auto&) {};
}

/// Reads the identifier of the answer itself.
inline auto id(unsigned int& target)
{
    return [&target](const auto& response) { target = response.id(); };
}

/// Reads the identifier of the answer's bean.
inline auto beanId(unsigned int& target)
{
    return [&target](const auto& response) { target = response.bean().id(); };
}

/// Appends UTF-8 texts of a message.
inline void appendTexts(QStringList& list, const google::protobuf::RepeatedPtrField<std::string>& texts)
{
    for (const std::string& text : texts)
        list.append(QString::fromStdString(text));
}

} // namespace readers

#endif
