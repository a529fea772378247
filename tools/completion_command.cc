#include "tools/completion_command.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tools/exit_status.h"
#include "tools/usage.h"

namespace geomath_files::program {
namespace {

std::string Joined(const std::vector<std::string>& words) {
  return fmt::format("{}", fmt::join(words, " "));
}

// Words that begin with "-" are options; for all others the shell offers its files.
std::string BashScript(const CLI::App& program) {
  const std::string commands = Joined(CommandNames(program));
  std::string script =
      "_geomath() {\n"
      "  local word=\"${COMP_WORDS[COMP_CWORD]}\" words=\"\"\n"
      "  case \"${COMP_CWORD}:${COMP_WORDS[1]}:$word\" in\n";
  script += fmt::format("    1:*) words=\"{} {}\" ;;\n", commands, Joined(OptionNames(program)));
  script += fmt::format("    2:help:*) words=\"{}\" ;;\n", commands);
  for (const std::string& name : CommandNames(program))
    script += fmt::format("    *:{}:-*) words=\"{}\" ;;\n", name,
                          Joined(OptionNames(FindCommand(program, name))));
  return script +
         "  esac\n"
         "  COMPREPLY=($(compgen -W \"$words\" -- \"$word\"))\n"
         "}\n"
         "complete -o default -F _geomath geomath\n";
}

std::string ZshScript(const CLI::App& program) {
  return "autoload -U +X bashcompinit && bashcompinit\n" + BashScript(program);
}

// A text as one word of fish.
std::string FishWord(const std::string& text) {
  std::string word = "'";
  for (const char c : text) {
    if (c == '\'' || c == '\\') word += '\\';
    word += c == '\n' ? ' ' : c;
  }
  return word + "'";
}

std::string FishScript(const CLI::App& program) {
  std::string script;
  for (const std::string& name : CommandNames(program)) {
    const CLI::App& command = FindCommand(program, name);
    script += fmt::format("complete -c geomath -n __fish_use_subcommand -f -a {} -d {}\n", name,
                          FishWord(command.get_description()));
    for (const CLI::Option* option : command.get_options()) {
      if (!option->nonpositional()) continue;
      script += fmt::format("complete -c geomath -n '__fish_seen_subcommand_from {}'", name);
      for (const std::string& letter : option->get_snames()) script += " -s " + letter;
      for (const std::string& word : option->get_lnames()) script += " -l " + word;
      script += fmt::format(" -d {}\n", FishWord(option->get_description()));
    }
  }
  return script;
}

}  // namespace

std::function<int()> PrepareCompletion(CLI::App& arguments) {
  const auto shell = std::make_shared<std::string>();
  arguments.footer(
      "In ~/.bashrc:                   eval \"$(geomath completion bash)\"\n"
      "In ~/.zshrc, after compinit:    eval \"$(geomath completion zsh)\"\n"
      "In ~/.config/fish/config.fish:  geomath completion fish | source");
  arguments.add_option("SHELL", *shell, "bash, zsh or fish")
      ->required()
      ->check(CLI::IsMember({"bash", "zsh", "fish"}));
  const CLI::App* program = arguments.get_parent();
  return [shell, program] {
    const std::string script = *shell == "bash"  ? BashScript(*program)
                               : *shell == "zsh" ? ZshScript(*program)
                                                 : FishScript(*program);
    std::fputs(script.c_str(), stdout);
    return kExitDone;
  };
}

}  // namespace geomath_files::program
