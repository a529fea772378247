#include "python/bindings/covariance.h"

#include <fmt/format.h>

#include "files/words/name_match.h"
#include "files/words/user_error.h"
#include "geomath/adjust/site_adjustment.h"
#include "geomath/chain/chain_uncertainty.h"

using namespace zel_cs::geomath;
using geomath_files::UserError;

namespace geomath_python {
namespace {

CovarianceFrame FrameOf(const std::string& name) {
  const std::vector<std::string> known = {"north-east-up", "geocentric", "geographic"};
  for (std::size_t i = 0; i < known.size(); ++i)
    if (name == known[i]) return static_cast<CovarianceFrame>(i);
  throw UserError(fmt::format("frame is \"{}\"; {}", geomath_files::Printable(name),
                              geomath_files::SuggestName(name, known)));
}

bool TakeNodes(const ChainObject& chain, double metres, ChainUncertainty& to) {
  bool any = false;
  for (const auto& part : chain.shifts)
    if (const auto* grid = dynamic_cast<const ShiftGrid*>(part->shift.shift.get()))
      any |= to.SetShiftNodes(*grid, metres, metres);
  return any;
}

bool TakeSite(const py::handle& site, ChainUncertainty& to) {
  SiteCovariance covariance;
  return (site.is_none() || site.cast<const SiteAdjustment&>().Covariance(covariance)) &&
         to.SetSite(covariance);
}

void TakeErrors(const py::object& errors, const ChainObject& chain, ChainUncertainty& to) {
  to.SetSite(chain.siteErrors.covariance);
  if (errors.is_none()) return;
  for (const auto& [key, value] : errors.cast<py::dict>()) {
    const std::string name = py::str(key);
    bool taken = false;
    const char* wanted = "a standard deviation is not negative";
    if (name == "datum") {
      taken = to.SetDatum(value.cast<double>());
    } else if (name == "geoid") {
      taken = to.SetGeoid(value.cast<double>());
    } else if (name == "site") {
      taken = TakeSite(value, to);
      wanted = "the covariance of a site is that of a rigid or similar one";
    } else if (name == "nodes") {
      taken = TakeNodes(chain, value.cast<double>(), to);
      wanted = "no shift grid of the chain has accuracies, or they have no such unit";
    } else {
      throw UserError(
          fmt::format("errors: there is no step \"{}\"; known: datum, geoid, site, nodes",
                      geomath_files::Printable(name)));
    }
    if (!taken) throw UserError(fmt::format("errors: {}: {}", name, wanted));
  }
}

// The covariances of all points, a copy, broadcast to them.
py::array_t<double> Covariances(const py::object& given, const Shape& points) {
  py::tuple shape(points.size() + 2);
  for (std::size_t i = 0; i < points.size(); ++i) shape[i] = points[i];
  shape[points.size()] = 3;
  shape[points.size() + 1] = 3;
  const py::module_ numpy = py::module_::import("numpy");
  const py::object numbers = numpy.attr("asarray")(given, "float64");
  try {
    // In C order: a copy would else have that of the strides, which a broadcast array has none of.
    return numpy.attr("array")(numpy.attr("broadcast_to")(numbers, shape), py::arg("order") = "C");
  } catch (const py::error_already_set&) {
    throw UserError(fmt::format("covariance: its shape {} must be that of the points and (3, 3)",
                                std::string(py::str(numbers.attr("shape")))));
  }
}

}  // namespace

py::object ConvertWithCovariance(const ChainObject& chain, bool toLocal,
                                 std::span<const Argument> arguments, const Factors& before,
                                 const Factors& after, const CovarianceArguments& uncertain,
                                 bool returnSteps) {
  ChainUncertainty uncertainty(chain.chain);
  TakeErrors(uncertain.errors, chain, uncertainty);
  const CovarianceFrame global = FrameOf(uncertain.frame);
  std::vector<ArrayReader> readers(arguments.begin(), arguments.end());
  const Shape shape = BroadcastShape(arguments, readers);
  py::array_t<double> covariances = Covariances(uncertain.covariance, shape);
  py::array_t<std::uint8_t> steps(shape);
  auto results = ResultArrays(py::none(), 3, shape);
  double* const columns[] = {results[0].mutable_data(), results[1].mutable_data(),
                             results[2].mutable_data()};
  double* const matrices = covariances.mutable_data();
  auto* const failed = reinterpret_cast<ChainStep*>(steps.mutable_data());
  for (ArrayReader& reader : readers) reader.Start(shape);
  {
    const py::gil_scoped_release unlocked;
    double years[kBlock];
    const auto size = static_cast<std::size_t>(steps.size());
    Pace pace;
    for (std::size_t first = 0, count; first < size; first += count, pace.Done()) {
      count = pace.Next(size - first);
      double* const c[] = {columns[0] + first, columns[1] + first, columns[2] + first};
      for (std::size_t k = 0; k < 3; ++k) readers[k].Read(c[k], count);
      if (arguments.size() > 3) readers[3].Read(years, count);
      const PointDates dates = arguments.size() > 3 ? PointDates(years) : PointDates(chain.date);
      before.Apply(c, count);
      double* const block = matrices + 9 * first;
      using enum CovarianceFrame;
      if (toLocal)
        uncertainty.ToLocalBatch(c[0], c[1], c[2], block, count, 1, failed + first, global,
                                 northEastUp, dates);
      else
        uncertainty.ToGlobalBatch(c[0], c[1], c[2], block, count, 1, failed + first, northEastUp,
                                  global, dates);
      if (!toLocal) DropBeyondTheMap(c, 3, count, failed + first);
      after.Apply(c, count);
    }
  }
  std::vector<py::object> all;
  for (const auto& column : results)
    all.push_back(shape.empty() ? py::object(py::float_(*column.data())) : py::object(column));
  all.push_back(covariances);
  if (returnSteps)
    all.push_back(shape.empty() ? py::object(py::int_(*steps.data())) : py::object(steps));
  return TupleOf(all);
}

}  // namespace geomath_python
