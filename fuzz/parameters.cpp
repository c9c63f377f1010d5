// The content of a parameters.xml that somebody has edited, or that another program has broken.

#include "core/parameters.h"
#include "core/files.h"
#include "core/parameterfile.h"
#include "fuzz/support/fuzzing.h"

void fuzz(std::string_view input) {
    pugi::xml_document document;
    if (!kst::parseParameters(input, document)) {
        return;
    }
    kst::takeParameters(document);
    require(kst::LATERAL_RANGE >= 2 && kst::LATERAL_RANGE <= 100);
    require(kst::MAX_FIT_FL >= 0.5F && kst::MAX_FIT_FL <= 24.0F);

    // What a start writes, the next start takes as it is, with the same values.
    const std::string port = kst::PORT_NUMBER.get();
    const float fit = kst::MAX_FIT_FL;
    pugi::xml_document written;
    require(kst::parseParameters(kst::xmlText(document), written));
    require(!kst::takeParameters(written));
    require(kst::PORT_NUMBER.get() == port && kst::MAX_FIT_FL == fit);
}
