#include "python/bindings/columns.h"

#include <fmt/format.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

#include "files/words/user_error.h"
#include "geomath/base/angle.h"

using namespace zel_cs::geomath;
using geomath_files::AngleKind;
using geomath_files::LargestAngle;
using geomath_files::UserError;

namespace geomath_python {
namespace {

constexpr auto kDouble = static_cast<std::ptrdiff_t>(sizeof(double));

// Half-open range of addresses that an array touches.
struct Extent {
  std::uintptr_t low, high;
  bool Overlaps(const Extent& other) const { return low < other.high && other.low < high; }
};

Extent ExtentOf(const py::array& array) {
  std::ptrdiff_t below = 0, above = array.itemsize();
  for (py::ssize_t d = 0; d < array.ndim(); ++d) {
    if (array.shape(d) == 0) return {0, 0};
    const py::ssize_t reach = (array.shape(d) - 1) * array.strides(d);
    (reach < 0 ? below : above) += reach;
  }
  const auto base = reinterpret_cast<std::uintptr_t>(array.data());
  return {base + static_cast<std::uintptr_t>(below), base + static_cast<std::uintptr_t>(above)};
}

std::string ShapeText(const Shape& shape) {
  return shape.size() == 1 ? fmt::format("({},)", shape[0])
                           : fmt::format("({})", fmt::join(shape, ", "));
}

double NumberAt(const char* at) {  // need not be aligned
  double number;
  std::memcpy(&number, at, sizeof number);
  return number;
}

void ReadStrided(const char* from, std::ptrdiff_t stride, double factor, double* to,
                 std::size_t count) {
  if (stride == kDouble && factor == 1) {
    std::memmove(to, from, count * sizeof(double));
  } else if (stride == kDouble) {
    for (std::size_t i = 0; i < count; ++i) to[i] = factor * NumberAt(from + i * sizeof(double));
  } else {
    for (std::size_t i = 0; i < count; ++i, from += stride) to[i] = factor * NumberAt(from);
  }
}

// NaN for what lies beyond the limit.
double Within(double number, double limit) {
  return std::abs(number) <= limit ? number : std::numeric_limits<double>::quiet_NaN();
}

// Whether the type of a data frame's column is text, of which some versions of pandas make numbers.
bool HoldsText(const py::object& column) {
  const py::object type = py::getattr(py::getattr(column, "dtype", py::none()), "type", py::none());
  return type.ptr() == reinterpret_cast<PyObject*>(&PyUnicode_Type);
}

// A column of a data frame whose type has a mark for missing values, which become NaN; null, with
// the error of Python set, when the others are no numbers.
py::array FilledColumn(const py::object& column) {
  const py::dict options;
  options["dtype"] = "f8";
  options["na_value"] = std::numeric_limits<double>::quiet_NaN();
  const auto filled = py::reinterpret_steal<py::object>(
      PyObject_Call(py::object(column.attr("to_numpy")).ptr(), py::tuple().ptr(), options.ptr()));
  return filled ? py::array::ensure(filled) : py::reinterpret_steal<py::array>(py::handle());
}

}  // namespace

Argument AngleArgument(const char* name, py::object value, AngleKind kind, bool degrees,
                       bool degreesInLibrary) {
  const double factor = degrees == degreesInLibrary ? 1 : degrees ? kRadPerDeg : kDegPerRad;
  const double limit = LargestAngle(kind) * (degreesInLibrary ? 1 : kRadPerDeg);
  return {name, std::move(value), factor, limit};
}

std::array<Argument, 2> PositionArguments(const py::object& lat, const py::object& lon,
                                          geomath_files::AxisPair axes, bool degrees) {
  constexpr AngleKind kinds[] = {AngleKind::latitude, AngleKind::longitude};
  return {AngleArgument("lat", lat, kinds[!axes.northFirst], degrees),
          AngleArgument("lon", lon, kinds[axes.northFirst], degrees)};
}

void DropBeyondTheMap(double* const* columns, std::size_t width, std::size_t count,
                      ChainStep* steps) {
  const double limit = LargestAngle(AngleKind::longitude) * kRadPerDeg;
  for (std::size_t i = 0; i < count; ++i) {
    if (!(std::abs(columns[0][i]) > limit || std::abs(columns[1][i]) > limit)) continue;
    for (std::size_t c = 0; c < width; ++c)
      columns[c][i] = std::numeric_limits<double>::quiet_NaN();
    if (steps) steps[i] = ChainStep::projection;
  }
}

void RequireAngle(const std::string& subject, double degrees, AngleKind kind) {
  const std::string problem = std::isfinite(degrees)
                                  ? geomath_files::AngleRangeProblem(degrees, kind)
                                  : "is not a finite number";
  if (!problem.empty()) throw UserError(subject + " " + problem);
}

ArrayReader::ArrayReader(const Argument& argument)
    : factor_(argument.factor), limit_(argument.limit) {
  py::object value = argument.value;
  if (py::hasattr(value, "filled"))  // a masked array
    value = value.attr("astype")("f8").attr("filled")(std::numeric_limits<double>::quiet_NaN());
  auto given = py::array::ensure(value);
  if (given && given.dtype().kind() == 'O' && py::hasattr(value, "to_numpy"))
    given = HoldsText(value) ? py::reinterpret_steal<py::array>(py::handle()) : FilledColumn(value);
  if (!given) {
    PyErr_Clear();
    throw py::type_error(fmt::format("{}: must be a number or an array of numbers", argument.name));
  }
  constexpr std::string_view kReal = "biufO";
  if (kReal.find(given.dtype().kind()) == std::string_view::npos)
    throw py::type_error(fmt::format("{}: must be numbers, not {}", argument.name,
                                     std::string(py::str(given.dtype()))));
  array_ = py::array_t<double, py::array::forcecast>::ensure(given);
  if (!array_) throw py::type_error(fmt::format("{}: must be numbers", argument.name));
}

void ArrayReader::DetachFrom(const py::array& other, bool sameAllowed) {
  if (!ExtentOf(array_).Overlaps(ExtentOf(other))) return;
  const bool same = array_.data() == other.data() && array_.size() == other.size() &&
                    (array_.flags() & py::array::c_style) != 0;
  if (!(same && sameAllowed)) array_ = array_.attr("copy")();
}

void ArrayReader::Start(const Shape& shape) {
  at_ = static_cast<const char*>(array_.data());
  axes_.assign(1, {1, 0});
  const std::size_t extra = shape.size() - static_cast<std::size_t>(array_.ndim());
  for (std::size_t d = 0; d < shape.size(); ++d) {
    const auto size = static_cast<std::size_t>(shape[d]);
    const auto own = static_cast<py::ssize_t>(d) - static_cast<py::ssize_t>(extra);
    const bool repeated = own < 0 || array_.shape(own) == 1;
    const std::ptrdiff_t stride = repeated ? 0 : array_.strides(own);
    if (size == 1) continue;
    Axis& last = axes_.back();
    if (last.size == 1)
      last = {size, stride};
    else if (last.stride == stride * static_cast<std::ptrdiff_t>(size))
      last = {last.size * size, stride};  // runs on without a jump
    else
      axes_.push_back({size, stride});
  }
}

void ArrayReader::Read(double* to, std::size_t count) {
  while (count > 0) {
    Axis& inner = axes_.back();
    const std::size_t n = std::min(count, inner.size - inner.position);
    ReadStrided(at_, inner.stride, factor_, to, n);
    if (limit_ != HUGE_VAL)
      for (std::size_t i = 0; i < n; ++i) to[i] = Within(to[i], limit_);
    to += n;
    count -= n;
    inner.position += n;
    at_ += static_cast<std::ptrdiff_t>(n) * inner.stride;
    for (std::size_t d = axes_.size(); d-- > 0 && axes_[d].position == axes_[d].size;) {
      at_ -= static_cast<std::ptrdiff_t>(axes_[d].size) * axes_[d].stride;
      axes_[d].position = 0;
      if (d == 0) break;
      ++axes_[d - 1].position;
      at_ += axes_[d - 1].stride;
    }
  }
}

Shape BroadcastShape(std::span<const Argument> arguments, std::span<const ArrayReader> readers) {
  Shape common;
  for (const ArrayReader& reader : readers) {
    const Shape own = reader.GetShape();
    if (own.size() > common.size()) common.insert(common.begin(), own.size() - common.size(), 1);
    const std::size_t extra = common.size() - own.size();
    for (std::size_t d = 0; d < own.size(); ++d) {
      py::ssize_t& size = common[extra + d];
      if (size != own[d] && size != 1 && own[d] != 1) {
        std::string shapes;
        for (std::size_t i = 0; i < arguments.size(); ++i)
          shapes += fmt::format("{}{} {}", i == 0 ? "" : ", ", arguments[i].name,
                                ShapeText(readers[i].GetShape()));
        throw UserError("the shapes cannot be broadcast together: " + shapes);
      }
      if (size == 1) size = own[d];
    }
  }
  return common;
}

std::vector<py::array_t<double>> ResultArrays(const py::object& out, std::size_t count,
                                              const Shape& shape) {
  std::vector<py::array_t<double>> arrays;
  if (out.is_none()) {
    for (std::size_t i = 0; i < count; ++i) arrays.emplace_back(shape);
    return arrays;
  }
  const std::string wanted = fmt::format(
      "out: must be {} of float64, C-contiguous, aligned and writeable, of shape {}",
      count == 1 ? "an array" : fmt::format("a tuple of {} arrays", count), ShapeText(shape));
  const py::tuple given = count == 1 && !py::isinstance<py::tuple>(out) ? py::make_tuple(out)
                          : py::isinstance<py::sequence>(out)           ? py::tuple(out)
                                                                        : py::tuple();
  if (given.size() != count) throw py::type_error(wanted);
  for (const py::handle& item : given) {
    constexpr int kContiguous = py::array::c_style;
    constexpr int kNeeded = kContiguous | py::detail::npy_api::NPY_ARRAY_ALIGNED_;
    if (!py::isinstance<py::array_t<double>>(item)) throw py::type_error(wanted);
    const auto array = py::reinterpret_borrow<py::array_t<double>>(item);
    const bool fits =
        std::equal(shape.begin(), shape.end(), array.shape(), array.shape() + array.ndim());
    if (!fits || (array.flags() & kNeeded) != kNeeded || !array.writeable())
      throw py::type_error(wanted);
    for (const auto& other : arrays)
      if (ExtentOf(array).Overlaps(ExtentOf(other)))
        throw UserError("out: the arrays share memory; each result needs its own");
    arrays.push_back(array);
  }
  return arrays;
}

void Pace::Done() {
  using namespace std::chrono_literals;
  constexpr auto kQuick = 20ms, kSlow = 200ms, kHearEvery = 100ms;
  const auto now = Clock::now();
  const auto took = now - blockStart_;
  if (took < kQuick) size_ = std::min(2 * size_, kBlock);
  if (took > kSlow) size_ = std::max(size_ / 2, std::size_t{1});
  blockStart_ = now;
  if (now - heard_ < kHearEvery) return;
  heard_ = now;
  const py::gil_scoped_acquire locked;
  if (PyErr_CheckSignals() != 0) throw py::error_already_set();
}

bool AllNumbers(std::span<const Argument> arguments, double* numbers) {
  for (const Argument& argument : arguments) {
    PyObject* const value = argument.value.ptr();
    if (!PyFloat_Check(value) && !PyLong_Check(value)) return false;
  }
  for (const Argument& argument : arguments) {
    *numbers = PyFloat_AsDouble(argument.value.ptr());
    if (*numbers == -1.0 && PyErr_Occurred()) throw py::error_already_set();
    *numbers *= argument.factor;
    if (argument.limit != HUGE_VAL) *numbers = Within(*numbers, argument.limit);
    ++numbers;
  }
  return true;
}

py::array_t<double> ArrayOf(const std::vector<double>& values) {
  return py::array_t<double>(static_cast<py::ssize_t>(values.size()), values.data());
}

py::object TupleOf(std::span<const py::object> results) {
  if (results.size() == 1) return results[0];
  py::tuple tuple(results.size());
  for (std::size_t i = 0; i < results.size(); ++i) tuple[i] = results[i];
  return tuple;
}

}  // namespace geomath_python
