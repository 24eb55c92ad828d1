#ifndef LUMO_CATALOG_NUMBERTEXT_H
#define LUMO_CATALOG_NUMBERTEXT_H

#include <string>

/// Numbers that travel as texts, read as strtod and atoi read them, but with a decimal point whatever the
/// locale: what follows the number is ignored, and a text that does not begin with one gives 0.
namespace numbertext {

double number(const std::string& text);

/// Beyond the range of int, its nearest end.
int count(const std::string& text);

} // namespace numbertext

#endif
