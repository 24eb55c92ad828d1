#ifndef LUMO_CATALOG_COORDRULES_H
#define LUMO_CATALOG_COORDRULES_H

#include "catalog/FieldRules.h"
#include "core/GbkTexts.h"
#include "lumo/catalog/CoordSetting.h"

namespace fieldrules {

/// The coordinate settings of any bean that has them: their fields have the same names in every bean.
template <class Bean>
void coordSetting(tagCoordSetting& coord, const Bean& bean)
{
    code(coord.datum, gbktexts::kDatums, LUMO_FIELD(datum));
    code(coord.projection, gbktexts::kProjections, LUMO_FIELD(projection));
    number(coord.coordParam1, LUMO_FIELD(coord_param1));
    number(coord.coordParam2, LUMO_FIELD(coord_param2));
    number(coord.coordParam3, LUMO_FIELD(coord_param3));
    number(coord.coordParam4, LUMO_FIELD(coord_param4));
    number(coord.coordParam5, LUMO_FIELD(coord_param5));
    number(coord.coordParam6, LUMO_FIELD(coord_param6));
    number(coord.coordParam7, LUMO_FIELD(coord_param7));
    number(coord.coordParam8, LUMO_FIELD(coord_extra7)); // one place for both
    code(coord.hemisphere, gbktexts::kHemispheres, LUMO_FIELD(hemisphere));
    text(coord.coordText, LUMO_FIELD(coord_text));
    number(coord.coordExtra1, LUMO_FIELD(coord_extra1));
    number(coord.coordExtra2, LUMO_FIELD(coord_extra2));
    number(coord.coordExtra3, LUMO_FIELD(coord_extra3));
    number(coord.coordExtra4, LUMO_FIELD(coord_extra4));
    number(coord.coordExtra5, LUMO_FIELD(coord_extra5));
    number(coord.coordExtra6, LUMO_FIELD(coord_extra6));
    number(coord.coordExtra7, LUMO_FIELD(coord_extra7));
}

} // namespace fieldrules

#endif
