#include "python/bindings/epsg.h"

#include <fmt/format.h>
#include <pybind11/pybind11.h>

namespace geomath_python {
namespace {

std::string AxesText(const wchar_t* axes) {
  const std::wstring text = axes ? axes : L"NE";
  return {text.begin(), text.end()};
}

}  // namespace

std::unique_ptr<geomath_files::CoordinateSystem> SystemOfEpsg(
    int code, const geomath_files::DatumWish& wish) {
  const pybind11::gil_scoped_release unlocked;
  const auto made = geomath_files::MakeEpsgSystem(std::to_string(code), wish);
  return geomath_files::ParseSystem(made.document.dump(), fmt::format("EPSG:{}", code));
}

std::shared_ptr<ProjectionObject> ProjectionObjectOf(
    const geomath_files::CoordinateSystem& system) {
  const geomath_files::NamedProjection& named = system.Named();
  const auto& on = system.LocalEllipsoid();
  return std::make_shared<ProjectionObject>(*named.kind, named.values, on.a, on.invF,
                                            AxesText(named.projection->GetNEAxes()),
                                            AxesText(named.projection->GetBLAxes()));
}

}  // namespace geomath_python
