#ifndef LUMO_CENTRE_IMAGE_NOIMAGE_H
#define LUMO_CENTRE_IMAGE_NOIMAGE_H

#include "centre/base/Error.h"

#include <string>

namespace centre {

/// The refusal of a file that has no format of images.
class NoImage : public Error
{
public:
    explicit NoImage(const std::string& reason) : Error(ExitCode::Failed, reason) {}
};

} // namespace centre

#endif
