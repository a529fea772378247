#include "tools/projections_command.h"

#include <fmt/format.h>

#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "files/system/projection_names.h"
#include "files/words/name_match.h"
#include "files/words/user_error.h"
#include "tools/exit_status.h"

namespace geomath_files::program {
namespace {

struct ProjectionsOptions {
  std::vector<std::string> names;
  bool json = false;
};

// Those that were asked for; all of them without a name.
std::vector<const ProjectionKind*> Chosen(const std::vector<std::string>& names) {
  std::vector<const ProjectionKind*> chosen;
  for (const std::string& name : names) {
    chosen.push_back(FindProjection(name));
    if (!chosen.back())
      throw UserError(fmt::format("\"{}\" is no projection; {}", Printable(name),
                                  SuggestName(name, ProjectionNames())));
  }
  if (names.empty())
    for (const ProjectionKind& kind : ProjectionKinds()) chosen.push_back(&kind);
  return chosen;
}

std::string AsText(const std::vector<const ProjectionKind*>& kinds) {
  std::string text;
  for (const ProjectionKind* kind : kinds) {
    text += fmt::format("{} (kind {})\n", kind->name, kind->code);
    if (kind->parameters.empty()) text += "  its parameters have no names\n";
    for (const ProjectionParameter& parameter : kind->parameters) {
      const std::string unit = UnitName(parameter.unit);
      text += fmt::format("  {:<18}{}{}\n", parameter.name, parameter.quantity,
                          unit.empty() ? "" : ", " + unit);
    }
  }
  return text;
}

std::string AsJson(const std::vector<const ProjectionKind*>& kinds) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const ProjectionKind* kind : kinds) {
    nlohmann::ordered_json parameters = nlohmann::ordered_json::array();
    for (const ProjectionParameter& parameter : kind->parameters) {
      nlohmann::ordered_json entry = {{"name", parameter.name}, {"quantity", parameter.quantity}};
      const std::string unit = UnitName(parameter.unit);
      if (!unit.empty()) entry["unit"] = unit;
      parameters.push_back(entry);
    }
    list.push_back({{"name", kind->name}, {"kind", kind->code}, {"parameters", parameters}});
  }
  return list.dump(2) + "\n";
}

int List(const ProjectionsOptions& options) {
  const auto kinds = Chosen(options.names);
  const std::string text = options.json ? AsJson(kinds) : AsText(kinds);
  const bool written =
      std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
  if (!written) throw UserError("standard output: cannot be written");
  return kExitDone;
}

}  // namespace

std::function<int()> PrepareProjections(CLI::App& arguments) {
  const auto options = std::make_shared<ProjectionsOptions>();
  arguments.add_option("name", options->names, "Only these, in any letter case");
  arguments.add_flag("--json", options->json, "As JSON");
  return [options] { return List(*options); };
}

}  // namespace geomath_files::program
