#include "install/services.h"

#include "core/log.h"
#include "core/parameters.h"

namespace kst {

void lf_migrateVersion() {
    if (PROGRAM_VERSION.get() != programVersionText()) {
        PROGRAM_VERSION.set(programVersionText());
        saveParameter(PROGRAM_VERSION);
    }
}

void gf_checkNewVersion() {}

} // namespace kst
