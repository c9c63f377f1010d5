#pragma once

// The small real world that a made installation refers to: models, airlines, registrations, known mistakes.

#include <vector>

#include <pugixml.hpp>

namespace kst::made {

struct Model {
    const char* code;
    bool airliner; ///< large or heavy, else light
};

struct Registration {
    const char* regcode;
    const char* airline;
    const char* model;
    const char* operatorCode;
    bool cargo;
};

struct Fix {
    const char* wrong;
    const char* right;
};

const std::vector<Model>& models();
const std::vector<const char*>& airlines();
const std::vector<Registration>& registrations();
const std::vector<Fix>& fixes();

/// Adds the facts as a plain reference document, as `kestrane-data dbase` takes it.
void addReferenceFacts(pugi::xml_document& document);

} // namespace kst::made
