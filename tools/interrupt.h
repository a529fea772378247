#pragma once

#include <string>

namespace geomath_files::program {

/// From here on Ctrl-C and a request to terminate are noted, so that long work can end with whole
/// files. The second one ends the program at once.
void CatchInterrupts();

/// Whether one has come.
bool Interrupted();

/// For a grid, which is no grid before its last row: throws UserError when one has come.
void StopIfInterrupted(const std::string& output);

}  // namespace geomath_files::program
