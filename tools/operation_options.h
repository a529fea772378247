#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

#include "files/epsg/epsg_system.h"

namespace geomath_files::program {

/// What the user says of the operation between two datums, as typed.
struct OperationOptions {
  std::string operation, near;
  std::vector<std::string> grids;
  bool list = false;
};

/// Adds --operation, --near, --grids and --list-operations; `between` says of what they are: "the
/// transformation to WGS 84". Returns --operation and --near, which other options may exclude.
std::pair<CLI::Option*, CLI::Option*> AddOperationOptions(CLI::App& arguments,
                                                          OperationOptions& options,
                                                          const std::string& between);

/// "27700" of "27700" and "EPSG:27700". Throws UserError, which names the option.
std::string CodeOf(const std::string& option, const std::string& text);

/// The texts beside the comma, where there is one comma.
std::optional<std::pair<std::string, std::string>> PairIn(const std::string& text);

/// The place of "52.5,-1.7"; none for a text that is no such pair, with the reason.
struct PlaceText {
  std::optional<Position> position;
  std::string problem;
};
PlaceText PlaceIn(const std::string& text);

/// --near: "52.5,-1.7", or nothing for an empty text. Throws UserError.
std::optional<Position> NearOf(const std::string& text);

}  // namespace geomath_files::program
