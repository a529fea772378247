#include "tools/usage.h"

#include <fmt/format.h>

#include "files/words/name_match.h"
#include "files/words/user_error.h"

namespace geomath_files::program {
namespace {

std::string UnknownCommand(const CLI::App& program, const std::string& name) {
  return fmt::format("there is no command \"{}\"; {}", Printable(name),
                     SuggestName(name, CommandNames(program)));
}

std::string UnknownOption(const CLI::App& app, const std::string& name) {
  const std::string nearest = NearestName(name, OptionNames(app));
  return fmt::format("there is no option \"{}\"{}", Printable(name),
                     nearest.empty() ? "" : "; did you mean \"" + nearest + "\"?");
}

// An argument that the app has no place for.
std::string Unexpected(const CLI::App& app, const std::string& argument) {
  if (argument.starts_with('-') && argument != "-")
    return UnknownOption(app, argument.substr(0, argument.find('=')));
  if (app.get_parent() == nullptr) return UnknownCommand(app, argument);
  return fmt::format("\"{}\" is one argument too many", Printable(argument));
}

}  // namespace

std::vector<std::string> CommandNames(const CLI::App& program) {
  std::vector<std::string> names;
  for (const CLI::App* command : program.get_subcommands([](const CLI::App*) { return true; }))
    names.push_back(command->get_name());
  return names;
}

std::vector<std::string> OptionNames(const CLI::App& command) {
  std::vector<std::string> names;
  for (const CLI::Option* option : command.get_options()) {
    for (const std::string& name : option->get_snames()) names.push_back("-" + name);
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return names;
}

const CLI::App& FindCommand(const CLI::App& program, const std::string& name) {
  const auto found =
      program.get_subcommands([&](const CLI::App* each) { return each->get_name() == name; });
  if (found.empty()) throw UserError(UnknownCommand(program, name));
  return *found.front();
}

std::string UsageProblem(const CLI::App& program, const CLI::ParseError& error) {
  const std::vector<CLI::App*> chosen = program.get_subcommands();  // those on the line
  const CLI::App& app = chosen.empty() ? program : *chosen.front();
  const std::vector<std::string> unknown = program.remaining(true);
  const std::string problem = unknown.empty() ? error.what() : Unexpected(app, unknown.front());
  const std::string command = chosen.empty() ? "" : " " + app.get_name();
  return fmt::format("{}\nRun geomath help{} for more information.", problem, command);
}

}  // namespace geomath_files::program
