#include "tools/help_command.h"

#include <cstdio>
#include <memory>
#include <string>

#include "tools/exit_status.h"
#include "tools/usage.h"

namespace geomath_files::program {

std::function<int()> PrepareHelp(CLI::App& arguments) {
  const auto name = std::make_shared<std::string>();
  arguments.add_option("COMMAND", *name, "the command; without one, the program as a whole");
  const CLI::App* program = arguments.get_parent();
  return [name, program] {
    const CLI::App& subject = name->empty() ? *program : FindCommand(*program, *name);
    const std::string title = program->get_name() + (name->empty() ? "" : " " + *name);
    // Not App::help, which tells about the command on the line: this one.
    const auto formatter = subject.get_formatter();
    std::fputs(formatter->make_help(&subject, title, CLI::AppFormatMode::Normal).c_str(), stdout);
    return kExitDone;
  };
}

}  // namespace geomath_files::program
