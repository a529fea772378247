#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace geomath_files::program {

/// The names of all commands.
std::vector<std::string> CommandNames(const CLI::App& program);

/// The options of a command as they are typed: "-o", "--output".
std::vector<std::string> OptionNames(const CLI::App& command);

/// The command of that name. Throws UserError with the nearest one when there is none.
const CLI::App& FindCommand(const CLI::App& program, const std::string& name);

/// What a line of arguments that could not be parsed has wrong: an unknown command or option with
/// the nearest that is known, or else what the parser says.
std::string UsageProblem(const CLI::App& program, const CLI::ParseError& error);

}  // namespace geomath_files::program
