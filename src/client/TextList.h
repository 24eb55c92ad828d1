#ifndef LUMO_CLIENT_TEXTLIST_H
#define LUMO_CLIENT_TEXTLIST_H

#include <QStringList>

#include <string>
#include <vector>

namespace lumo::internal {

inline std::vector<std::string> textsOf(const QStringList& list)
{
    std::vector<std::string> texts;
    for (const QString& text : list)
        texts.push_back(text.toStdString());
    return texts;
}

} // namespace lumo::internal

#endif
