#pragma once

// The simulation variables that a client can put into a data definition, in the units it may ask for.

#include "standins/simulator/aircraft.h"
#include "standins/simulator/wire.h"

#include <cstdint>
#include <string_view>

namespace kst::standin {

/// The simulated time as its own variables tell it.
struct ZuluDate {
    double secondsOfDay = 0.0;
    int dayOfYear = 1; ///< counts from 1
    int year = 1970;
};

/// The date of a time in seconds since 1970, UTC.
ZuluDate zuluDateOf(double epochSeconds);

/// What a variable's value is taken from.
struct Observation {
    const Aircraft& aircraft;
    const Terrain& terrain;
    const ZuluDate& date;
};

struct Variable;

/// One entry of a data definition.
struct DefinedField {
    const Variable* variable = nullptr;
    double perBase = 1.0; ///< the variable's own unit times this is the asked unit
    std::uint32_t type = 0;
};

/// Makes the entry for a variable, unit and data type. Gives the number of the published exception that
/// refuses it, or 0: an unknown name or a unit that does not fit is 7, a data type that does not fit is 18.
std::uint32_t defineField(std::string_view name, std::string_view unit, std::uint32_t type,
                          DefinedField& field);

/// Appends the present value in the field's unit and type.
void writeValue(PacketWriter& out, const DefinedField& field, const Observation& seen);

/// A value that a client sends for a field.
struct GivenValue {
    const Variable* variable = nullptr;
    double number = 0.0; ///< in the variable's own unit
};

/// Takes a field's value from what a client sent. Gives the number of the exception that refuses it, or 0: a
/// variable that cannot be set or a number that is not finite or out of all reason is 20.
std::uint32_t readValue(PacketReader& in, const DefinedField& field, GivenValue& given);

/// Puts the value into the aircraft.
void applyValue(Aircraft& aircraft, const GivenValue& given);

/// Whether the value is part of where the aircraft is.
bool setsPlace(const GivenValue& given);

/// Bytes of a field of that data type; 0 for a text of open length.
std::size_t typeSize(std::uint32_t type);

} // namespace kst::standin
