#pragma once

namespace geomath_tools {

/// From here on Ctrl-C and a request to terminate are noted, so that long work can end with whole
/// files. The second one ends the program at once.
void CatchInterrupts();

/// Whether one has come.
bool Interrupted();

}  // namespace geomath_tools
