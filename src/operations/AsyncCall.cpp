#include "operations/AsyncCall.h"

#include "lumo/core/CStringCodec.h"

#include <atomic>

namespace asynccall {

namespace {

std::atomic<int> outstanding{0};
std::atomic<bool> processEnds{false};

} // namespace

void countStart()
{
    ++outstanding;
}

void countEnd()
{
    --outstanding;
}

bool endAll()
{
    processEnds = true;
    return outstanding == 0;
}

bool reachesApplication()
{
    return !processEnds;
}

std::string logText(const std::string& text)
{
    return reachesApplication() ? CLumoCStringCodec::toStdString(QString::fromStdString(text)) : text;
}

} // namespace asynccall
