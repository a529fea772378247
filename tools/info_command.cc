#include "tools/info_command.h"

#include <fmt/format.h>

#include <cstdio>
#include <memory>
#include <string>

#include "files/conversion/layer_conversion.h"
#include "files/conversion/system_description.h"
#include "files/words/text_file.h"
#include "files/words/user_error.h"
#include "tools/exit_status.h"

namespace geomath_files::program {
namespace {

struct InfoOptions {
  std::string subject, notation;
};

// What --as takes.
struct Notation {
  const char* word;
  SystemNotation notation;
};
constexpr Notation kNotations[] = {{"wkt", SystemNotation::wkt},
                                   {"projjson", SystemNotation::projjson},
                                   {"proj", SystemNotation::proj},
                                   {"system", SystemNotation::system}};

int Inform(const InfoOptions& options) {
  std::string text;
  for (const Notation& each : kNotations)
    if (options.notation == each.word) text = WriteSystem(options.subject, each.notation);
  if (text.empty() && HasLayers(options.subject))
    text = DescribeLayers(options.subject);
  else if (text.empty())
    text = DescribeSystem(options.subject);
  std::fputs(text.c_str(), stdout);
  return kExitDone;
}

}  // namespace

std::function<int()> PrepareInfo(CLI::App& arguments) {
  const auto options = std::make_shared<InfoOptions>();
  arguments
      .add_option("SYSTEM", options->subject,
                  "an EPSG code (EPSG:31467, EPSG:25832+7837), a system file, a file of WKT or "
                  "PROJJSON; or a file of points, lines or polygons")
      ->required();
  arguments
      .add_option("--as", options->notation,
                  "the system as wkt (WKT 2), projjson, proj (a PROJ string) or system (a system "
                  "file) instead of words")
      ->check(CLI::IsMember({"wkt", "projjson", "proj", "system"}));
  return [options] { return Inform(*options); };
}

}  // namespace geomath_files::program
