#include "centre/image/process/GdalErrors.h"

#include "centre/image/process/SceneFolder.h"

#include <string_view>

namespace centre {

namespace {

/// libtiff goes on without a field that it can't read, libjpeg without the data that is damaged.
bool meansLoss(std::string_view warning)
{
    for (const char* loss :
         {"IO error", "Premature end of JPEG", "premature end of data", "bad Huffman code", "instead of RST"})
        if (warning.find(loss) != std::string_view::npos)
            return true;
    return false;
}

} // namespace

GdalErrors::GdalErrors()
{
    CPLPushErrorHandlerEx(keep, this);
}

GdalErrors::~GdalErrors()
{
    CPLPopErrorHandler();
}

std::string GdalErrors::first(const std::string& otherwise) const
{
    std::string text = m_First.empty() ? otherwise : m_First;
    const std::string root = kSceneRoot;
    for (std::size_t at = text.find(root); at != std::string::npos; at = text.find(root, at))
        text.erase(at, root.size());
    return text;
}

void GdalErrors::keep(CPLErr level, CPLErrorNum, const char* text)
{
    auto& errors = *static_cast<GdalErrors*>(CPLGetErrorHandlerUserData());
    if (errors.m_First.empty() && (level >= CE_Failure || (level == CE_Warning && meansLoss(text))))
        errors.m_First = text;
}

} // namespace centre
