#include "files/models/shift_file.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <span>
#include <string_view>

#include "files/models/deformation_file.h"
#include "files/models/kept_shifts.h"
#include "files/models/raster_reader.h"
#include "files/models/shift_json.h"
#include "files/words/name_match.h"
#include "files/words/text_file.h"
#include "files/words/user_error.h"
#include "geomath/shift/ntv2_file.h"

using namespace zel_cs::geomath;

namespace geomath_files {
namespace {

bool IsTiff(std::string_view bytes) {
  using namespace std::string_view_literals;
  for (const std::string_view magic : {"II*\0"sv, "MM\0*"sv, "II+\0"sv, "MM\0+"sv})
    if (bytes.starts_with(magic)) return true;
  return false;
}

bool IsJson(std::string_view bytes) {
  const std::size_t first = bytes.find_first_not_of(" \t\r\n");
  return first != std::string_view::npos && bytes[first] == '{';
}

std::unique_ptr<CoordinateShift> OfNtv2(const std::string& bytes, const std::string& file) {
  Ntv2Error error;
  std::unique_ptr<CoordinateShift> grid =
      ParseNtv2(std::as_bytes(std::span(bytes.data(), bytes.size())), &error);
  if (grid) return grid;
  if (error.fault == Ntv2Fault::notNtv2)
    throw UserError(
        file +
        ": is no grid of shifts (NTv2, geodetic TIFF), no triangulation and no deformation "
        "model (JSON)");
  throw UserError(fmt::format("{}: at byte {}: {}", file, error.offset, Printable(error.reason)));
}

std::string ReadBytes(const std::string& path) {
  constexpr std::uintmax_t kLargestFile = std::uintmax_t{1} << 30;  // bytes
  RequireLocalPath(path);
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(path, error);
  if (std::filesystem::is_directory(status)) throw UserError(path + ": is a directory");
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  if (error) throw UserError(fmt::format("{}: cannot be read: {}", path, error.message()));
  if (size > kLargestFile) throw UserError(path + ": too large for a file of shifts (1 GiB)");
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  std::string bytes(static_cast<std::size_t>(size), '\0');
  if (!file.read(bytes.data(), static_cast<std::streamsize>(size)))
    throw UserError(fmt::format("{}: cannot be read: {}", path, std::strerror(errno)));
  return bytes;
}

}  // namespace

ShiftBytes ReadShiftBytes(const std::string& path) {
  ShiftBytes bytes;  // moved in: a list of initial values would be copied
  const std::string& own = bytes.emplace("", ReadBytes(path)).first->second;
  const std::filesystem::path folder = std::filesystem::path(path).parent_path();
  if (IsJson(own) && IsDeformationModel(own))
    for (const std::string& name : GridsOfDeformationModel(own, path))
      bytes.emplace(name, ReadBytes((folder / name).string()));
  return bytes;
}

std::unique_ptr<CoordinateShift> ParseShift(const ShiftBytes& bytes, const ShiftChoice& choice) {
  const std::string& own = bytes.at("");
  if (IsTiff(own)) return RequireRasterReader(choice.file).ParseShift(own, choice);
  if (IsJson(own))
    return IsDeformationModel(own) ? ParseDeformationModel(bytes, choice.file)
                                   : ParseShiftJson(own, choice);
  return OfNtv2(own, choice.file);
}

std::shared_ptr<const CoordinateShift> OpenShift(const ShiftChoice& choice) {
  KeptShifts& kept = KeptShifts::Instance();
  const auto state = FileState::Of(choice.file);
  if (state)
    if (auto shift = kept.Find(choice, *state)) return shift;
  const ShiftBytes bytes = ReadShiftBytes(choice.file);
  std::shared_ptr<const CoordinateShift> shift = ParseShift(bytes, choice);
  const bool standsAlone =
      bytes.size() == 1;  // else the state of one file says nothing of the others
  if (state && standsAlone) kept.Keep(choice, *state, shift);
  return shift;
}

}  // namespace geomath_files
