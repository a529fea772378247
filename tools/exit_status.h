#pragma once

namespace geomath_files::program {

/// Exit status of the program.
enum ExitStatus {
  kExitDone = 0,
  kExitSomeFailed = 1,  ///< the work is done, but some rows have no result
  kExitStopped = 2,     ///< wrong usage or input: the work was not done, or not to its end
};

}  // namespace geomath_files::program
