#pragma once

#include <cstddef>

namespace zel_cs::geomath {

/// KmsPrepare and KmsConvert for the points of a block, one after the other and nothing at all where the
/// host has none. A point that a step refuses gets a first coordinate that is not finite; one with
/// such a coordinate is left out.
void KmsPrepareBlock(double* lat, double* lon, std::size_t count, int direction);
void KmsConvertBlock(double* a, double* b, std::size_t count, int system, int direction);

/// Whether the host has no preparation, or none of the conversions into and out of a system: what a class
/// does then has derivatives.
bool KmsPreparesNothing();
bool KmsConvertsNothing(int system);

}  // namespace zel_cs::geomath
