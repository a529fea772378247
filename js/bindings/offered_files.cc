#include "js/bindings/offered_files.h"

#include <map>
#include <optional>
#include <span>

#include "files/models/shift_file.h"
#include "files/words/name_match.h"
#include "files/words/number_text.h"
#include "files/words/sibling_path.h"
#include "geomath/platform/file_text.h"
#include "geomath/platform/read_number.h"
#include "geomath/shift/ntv2_file.h"

using namespace zel_cs::geomath;

namespace geomath_js {
namespace {

std::map<std::string, std::string_view> offered;

}  // namespace

OfferedFiles::OfferedFiles(const json& places) {
  for (const auto& [name, place] : places.items())
    offered[name] = {reinterpret_cast<const char*>(place.at(0).get<std::uintptr_t>()),
                     place.at(1).get<std::size_t>()};
}

OfferedFiles::~OfferedFiles() { offered.clear(); }

std::string_view OfferedFile(const std::string& name) {
  const auto found = offered.find(name);
  if (found == offered.end())
    throw geomath_files::UserError(name + ": is not among the \"files\" that are given");
  return found->second;
}

}  // namespace geomath_js

// What the library and the readers of system files take from a file system elsewhere.

namespace zel_cs::geomath {

std::optional<std::string> TextOfFile(const char* path, std::uintmax_t most, FileFault& fault) {
  const auto found = geomath_js::offered.find(path);
  if (found == geomath_js::offered.end()) {
    fault = {FileFault::noFile, ""};
    return std::nullopt;
  }
  if (found->second.size() > most) {
    fault = {FileFault::tooLarge, ""};
    return std::nullopt;
  }
  return std::string(found->second);
}

}  // namespace zel_cs::geomath

namespace geomath_files {

std::string SiblingPath(const std::string&, const std::string& name) { return name; }

// What the dates of system files need of files/words/number_text.cc, which this standard library,
// without std::from_chars for doubles, does not compile; words about numbers beyond doubles differ.
std::string_view Trim(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

ParsedNumber ParseNumber(std::string_view text) {
  if (const auto number = ReadNumber(Trim(text))) return {*number, {}};
  return {0, "\"" + Printable(text) + "\" is not a number"};
}

std::unique_ptr<CoordinateShift> ParseShift(const ShiftBytes& bytes, const ShiftChoice& choice) {
  const std::string& own = bytes.at("");
  Ntv2Error error;
  auto grid = ParseNtv2(std::as_bytes(std::span(own)), &error);
  if (!grid)
    throw UserError(choice.file + ", byte " + std::to_string(error.offset) + ": " + error.reason +
                    " (the package reads grids of NTv2)");
  return grid;
}

std::shared_ptr<const CoordinateShift> OpenShift(const ShiftChoice& choice) {
  return ParseShift({{"", std::string(geomath_js::OfferedFile(choice.file))}}, choice);
}

namespace {

// A geoid of the package in a system that was read.
class OfferedGeoid : public LoadedGeoid {
 public:
  explicit OfferedGeoid(std::shared_ptr<geomath_js::GeoidObject> of) : geoid_(std::move(of)) {}
  const GeoidHeight& Heights() const override { return geoid_->Heights(); }
  std::shared_ptr<geomath_js::GeoidObject> Shared() const { return geoid_; }

 private:
  std::shared_ptr<geomath_js::GeoidObject> geoid_;
};

}  // namespace

std::unique_ptr<LoadedGeoid> OpenGeoid(const GeoidChoice& choice) {
  if (choice.grid.empty())
    throw UserError(choice.model + ": the package takes models as a GlobalGeoid");
  return std::make_unique<OfferedGeoid>(geomath_js::GtxGeoid(choice.grid, choice.interpolation));
}

}  // namespace geomath_files

namespace geomath_js {

std::shared_ptr<GeoidObject> SharedGeoid(const geomath_files::LoadedGeoid& geoid) {
  return static_cast<const geomath_files::OfferedGeoid&>(geoid).Shared();
}

}  // namespace geomath_js
