// The shared value conversions the reports read database columns through.
#pragma once

#include <string>

#include "common/variant.h"

namespace ent {

// Normalises a value to a number-like value: empty and null give the 32-bit whole number 0; 8/16/32-bit
// whole numbers give a 32-bit whole number; single, double and decimal give currency (four decimals,
// halves to even; Error 6 beyond its range); anything else comes back unchanged.
Variant ToNumeric(const Variant& value);

// Null gives the empty text; anything else its standard text (CStr); a value without a text form
// raises the conversion's error.
std::string SafeString(const Variant& value);

}  // namespace ent
