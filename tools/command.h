#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <span>

namespace geomath_files::program {

/// A subcommand: `prepare` adds its options to the parser and returns what runs it, called after
/// the arguments are parsed. The function may throw UserError.
struct Command {
  const char* name;
  const char* summary;
  std::function<int()> (*prepare)(CLI::App& arguments);
};

/// All subcommands.
std::span<const Command> Commands();

}  // namespace geomath_files::program
