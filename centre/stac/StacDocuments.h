#ifndef LUMO_CENTRE_STAC_STACDOCUMENTS_H
#define LUMO_CENTRE_STAC_STACDOCUMENTS_H

#include "centre/stac/Collections.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace centre {

// The documents of the API that are not of one collection. `root` is the address of the landing page.

nlohmann::json landingPage(const std::vector<Collection>& collections, const std::string& root);
nlohmann::json conformance();
/// The properties that a filter may name, as a JSON schema; `self` is its address.
nlohmann::json queryables(const std::string& self);
/// The description of the API for programs (OpenAPI 3.0) and for people (HTML).
std::string apiDescription(const std::string& root);
std::string apiPage();

} // namespace centre

#endif
