#pragma once

#include <string>
#include <vector>

#include "tools/epoch_option.h"
#include "tools/operation_options.h"
#include "tools/row_loop.h"

namespace geomath_files::program {

/// What the user says of a conversion between two systems.
struct BetweenOptions {
  std::string from, to;  ///< systems; `from` may be "input"
  std::vector<std::string> input;
  PointOptions points;
  OperationOptions operation;
  EpochOption epoch;
  std::string unit;
  double densify = 0;
  bool one = false;
  int decimals = 4;
};

/// `geomath convert --from … --to …`: points, a position as typed, or layers. Returns the exit status.
int RunBetween(BetweenOptions options);

}  // namespace geomath_files::program
