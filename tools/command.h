#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <span>

namespace geomath_tools {

/// Exit status of the program.
enum ExitStatus {
  kExitDone = 0,
  kExitSomeFailed = 1,  ///< the work is done, but some rows could not be converted
  kExitStopped = 2,     ///< wrong usage or input: the work was not done, or not to its end
};

/// A subcommand: `prepare` adds its options to the parser and returns what runs it, called after
/// the arguments are parsed. The function may throw UserError.
struct Command {
  const char* name;
  const char* summary;
  std::function<int()> (*prepare)(CLI::App& arguments);
};

/// All subcommands.
std::span<const Command> Commands();

}  // namespace geomath_tools
