#ifndef LUMO_CORE_CSTRINGCODEC_H
#define LUMO_CORE_CSTRINGCODEC_H

#include "lumo/components/platform/Export.h"

#include <QString>
#include <string>

class QTextCodec;

/// How `char*` texts of the interface become QString and back, wherever the interface takes or gives
/// the one for the other. Safe from any thread.
class LUMO_EXPORT CLumoCStringCodec
{
public:
    /// Chooses the codec for the whole process; null, the default, is the system code page. The codec
    /// must stay alive; QTextCodec::codecForName gives such ones. With any other than the system code page,
    /// in which records hold their texts, a text of a record that goes back in does not mean the same.
    static void setCodec(QTextCodec* codec);

    /// The text as a QString; null gives an empty one.
    static QString fromAscii(const char* text);
    static std::string toStdString(const QString& text);
};

#endif
