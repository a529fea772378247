#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

#include "files/system/system_file.h"

namespace geomath_files::program {

/// What the user says of the date of positions.
struct EpochOption {
  std::string epoch;   ///< as given
  std::string column;  ///< whose dates those of the rows are; empty for none
};

/// Adds --epoch.
void AddEpoch(CLI::App& arguments, EpochOption& option);
/// Adds --epoch and --epoch-column.
void AddEpochAndColumn(CLI::App& arguments, EpochOption& option);

/// The decimal year of --epoch; nothing where it is not given. Throws UserError for what is no date.
std::optional<double> GivenDate(const std::string& epoch);

/// The date of the positions, a decimal year: the one given, or that of the system; kNoDate where
/// the system needs none, or rows have theirs. Throws UserError where it is missing; `name` is that of
/// the system file. A date that changes nothing is told on standard error.
double DateOf(const EpochOption& option, const CoordinateSystem& system, const std::string& name);

}  // namespace geomath_files::program
