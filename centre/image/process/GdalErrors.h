#ifndef LUMO_CENTRE_IMAGE_GDALERRORS_H
#define LUMO_CENTRE_IMAGE_GDALERRORS_H

#include <cpl_error.h>

#include <string>

namespace centre {

/// Keeps the first error that GDAL reports while the object lives, and the first warning that means lost
/// data. Other warnings are about odd fields, which many programs write.
class GdalErrors
{
public:
    GdalErrors();
    ~GdalErrors();
    GdalErrors(const GdalErrors&) = delete;
    GdalErrors& operator=(const GdalErrors&) = delete;

    bool none() const { return m_First.empty(); }
    /// Without the names that only this process has; `otherwise` if there is none.
    std::string first(const std::string& otherwise = "an error without text") const;
    void forget() { m_First.clear(); }

private:
    static void CPL_STDCALL keep(CPLErr level, CPLErrorNum number, const char* text);

    std::string m_First;
};

} // namespace centre

#endif
