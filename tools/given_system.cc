#include "tools/given_system.h"

#include <cstdio>

#include "files/epsg/epsg_code.h"
#include "files/words/text_file.h"

namespace geomath_files::program {

void TellSystem(const EpsgSystem& system) {
  const std::string description = system.document.value("description", "");
  std::fprintf(stderr, "geomath: %s\n", description.c_str());
  for (const std::string& note : system.notes) std::fprintf(stderr, "geomath: %s\n", note.c_str());
}

std::string GivenSystemText(const std::string& name) {
  const std::string code = WithoutAuthority(name);
  if (code == name) return ReadSystemText(name);
  const EpsgSystem made = MakeEpsgSystem(code, {});
  TellSystem(made);
  return made.document.dump();
}

std::unique_ptr<CoordinateSystem> GivenSystem(const std::string& name) {
  return ParseSystem(GivenSystemText(name), InputName(name));
}

}  // namespace geomath_files::program
