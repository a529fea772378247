// What the module exports.

#include <cstdlib>
#include <new>

#include "files/system/ellipsoid_names.h"
#include "files/system/json_section.h"
#include "files/system/projection_names.h"
#include "files/words/name_match.h"
#include "geomath/chain/coordinate_chain.h"
#include "js/bindings/object.h"

#define GEOMATH_JS(name) extern "C" __attribute__((export_name(name)))

namespace geomath_js {
namespace {

struct Maker {
  const char* kind;
  std::shared_ptr<Object> (*make)(const json& given);
};
constexpr Maker kMakers[] = {
    {"Ellipsoid", &MakeEllipsoid},         {"Datum", &MakeDatum},
    {"Projection", &MakeProjection},       {"LocalToGrid", &MakeLocalToGrid},
    {"GridToGround", &MakeGridToGround},   {"RegionalGeoid", &MakeRegionalGeoid},
    {"GlobalGeoid", &MakeGlobalGeoid},     {"ShiftGrid", &MakeShiftGrid},
    {"CoordinateChain", &MakeChain},       {"SystemChain", &MakeSystemChain},
    {"Calibration", &MakeCalibration},     {"CalibrationChain", &MakeCalibrationChain},
    {"MagneticModel", &MakeMagneticModel}, {"MagneticField", &MakeMagneticField}};

alignas(16) double columns[kColumns][kBlock];
std::uint8_t steps[kBlock];
std::string text;  // of the last call that gave one

// Runs what may throw; `text` then holds the complaint, and the result is that of no object.
template <class Run>
auto Guarded(Run run) -> decltype(run()) {
  try {
    return run();
  } catch (const std::bad_alloc&) {
    text = "there is no memory for it";
  } catch (const std::exception& error) {
    text = error.what();
  }
  return {};
}

json Projections() {
  json all = json::object();
  for (const geomath_files::ProjectionKind& kind : geomath_files::ProjectionKinds()) {
    json& parameters = all[kind.name] = json::object();
    for (const geomath_files::ProjectionParameter& parameter : kind.parameters) {
      const std::string unit = geomath_files::UnitName(parameter.unit);
      parameters[geomath_files::CamelName(parameter.name)] =
          unit.empty() ? parameter.quantity : parameter.quantity + ", " + unit;
    }
  }
  return all;
}

json StepTexts() {
  json texts = json::array();
  constexpr int kSteps = static_cast<int>(zel_cs::geomath::ChainStep::pointMotion) + 1;
  for (int step = 0; step < kSteps; ++step)
    texts.push_back(zel_cs::geomath::ChainStepName(static_cast<zel_cs::geomath::ChainStep>(step)));
  return texts;
}

}  // namespace

GEOMATH_JS("allocate") void* Allocate(std::size_t size) { return std::malloc(size); }
GEOMATH_JS("release") void Release(void* room) { std::free(room); }
GEOMATH_JS("columns") double* Columns() { return columns[0]; }
GEOMATH_JS("steps") std::uint8_t* Steps() { return steps; }
GEOMATH_JS("text") const char* Text() { return text.data(); }
GEOMATH_JS("textSize") std::size_t TextSize() { return text.size(); }

/// An object of `{"kind": …, "given": …}`; null, and the complaint as text, when there is none.
GEOMATH_JS("make") Handle Make(const char* description, std::size_t size) {
  return Guarded([&]() -> Handle {
    const json wanted = geomath_files::ParseJson({description, size}, "");
    const auto kind = wanted.at("kind").get<std::string>();
    for (const Maker& maker : kMakers)
      if (kind == maker.kind) return new std::shared_ptr<Object>(maker.make(wanted.at("given")));
    throw geomath_files::UserError("there is no class " + kind);
  });
}

GEOMATH_JS("dispose") void Dispose(Handle handle) { delete handle; }

/// Converts the first `count` points of the columns. False, and the complaint as text, when that
/// cannot be done at all.
GEOMATH_JS("convert")
bool Convert(Handle handle, int operation, std::size_t count, bool degrees, bool wantSteps) {
  return Guarded([&] {
    (*handle)->Convert(operation, {columns, wantSteps ? steps : nullptr, count, degrees});
    return true;
  });
}

/// The same of one point, whose results are in the first places of the columns.
GEOMATH_JS("convertPoint")
bool ConvertPoint(Handle handle, int operation, bool degrees, double first, double second,
                  double third) {
  columns[0][0] = first;
  columns[1][0] = second;
  columns[2][0] = third;
  return Convert(handle, operation, 1, degrees, true);
}

/// The properties of an object, or without one the lists of the package, as text in JSON.
GEOMATH_JS("describe") bool Describe(Handle handle) {
  return Guarded([&] {
    text = (handle ? (*handle)->Describe()
                   : json{{"projections", Projections()},
                          {"ellipsoids", geomath_files::EllipsoidNames()},
                          {"steps", StepTexts()}})
               .dump();
    return true;
  });
}

json Numbers(std::initializer_list<NamedNumber> list) {
  json numbers = json::object();
  for (const NamedNumber& number : list) numbers[number.name] = number.value;
  return numbers;
}

json Without(json given, std::initializer_list<const char*> keys) {
  for (const char* key : keys) given.erase(key);
  return given;
}

std::string BytesAt(const json& place) {
  return {reinterpret_cast<const char*>(place.at(0).get<std::uintptr_t>()),
          place.at(1).get<std::size_t>()};
}

std::vector<double> DoublesAt(const json& given, const char* key) {
  if (!given.contains(key)) return {};
  const json& place = given.at(key);
  const auto* values = reinterpret_cast<const double*>(place.at(0).get<std::uintptr_t>());
  return {values, values + place.at(1).get<std::size_t>() / sizeof(double)};
}

}  // namespace geomath_js
