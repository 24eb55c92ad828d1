#include "operations/AsyncCall.h"

#include "lumo/core/CStringCodec.h"

#include <QString>

namespace asynccall {

std::string logText(const std::string& text)
{
    if (!OutstandingCall::answersReachApplication())
        return text;
    return CLumoCStringCodec::toStdString(QString::fromStdString(text));
}

} // namespace asynccall
