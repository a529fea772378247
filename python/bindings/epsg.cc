#include "python/bindings/epsg.h"

#include <fmt/format.h>
#include <pybind11/stl.h>

#include "python/bindings/extra.h"

namespace geomath_python {
namespace {

std::string AxesText(const wchar_t* axes) {
  const std::wstring text = axes ? axes : L"NE";
  return {text.begin(), text.end()};
}

}  // namespace

std::unique_ptr<geomath_files::CoordinateSystem> SystemOfEpsg(int code, const EpsgWish& wish) {
  using pybind11::literals::operator""_a;
  const std::string name = fmt::format("EPSG:{}", code);
  const auto text =
      ImportExtra(name)
          .attr("epsg_system")(std::to_string(code), "datum"_a = wish.datum,
                               "operation"_a = wish.operation, "near"_a = wish.near,
                               "grids"_a = wish.grids, "from_frame"_a = wish.fromFrame,
                               "to_frame"_a = wish.toFrame)
          .cast<std::string>();
  const pybind11::gil_scoped_release unlocked;
  return geomath_files::ParseSystem(text, name);
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
