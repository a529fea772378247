#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "files/system/system_sections.h"
#include "files/words/number_text.h"
#include "geomath/chain/coordinate_chain.h"

/// How methods of the package take and give coordinates: numbers or arrays of any shape, which are
/// broadcast against each other, and results of the common shape. Arguments are copied into the
/// arrays of the results block by block, whatever their strides, and converted there while they are
/// in the cache: every array is read once or written once.
namespace geomath_python {

namespace py = pybind11;

/// Points of a block: its columns fit the first-level cache.
inline constexpr std::size_t kBlock = 512;

/// An argument as the caller gave it, and the factor that turns its unit into that of the library.
struct Argument {
  const char* name;
  py::object value;
  double factor = 1;
  double limit = HUGE_VAL;  ///< in the unit of the library; what lies beyond is read as NaN
};

/// A latitude or longitude, in degrees or radians here and in the library.
Argument AngleArgument(const char* name, py::object value, geomath_files::AngleKind kind,
                       bool degrees, bool degreesInLibrary = false);

/// A pair of latitude and longitude, in the order of its axes.
std::array<Argument, 2> PositionArguments(const py::object& lat, const py::object& lon,
                                          geomath_files::AxisPair axes, bool degrees);

/// Positions that an inverse put more than a full turn away, in radians in the first two columns of
/// `width`, become NaN: the point lies beyond the map. `steps`, when given, names the projection.
void DropBeyondTheMap(double* const* columns, std::size_t width, std::size_t count,
                      zel_cs::geomath::ChainStep* steps = nullptr);

/// Throws Error, which begins with the subject, for degrees that are out of range or no number.
void RequireAngle(const std::string& subject, double degrees, geomath_files::AngleKind kind);

using Shape = std::vector<py::ssize_t>;

/// Reads an array of numbers as doubles in the order of a larger array that it is broadcast to.
class ArrayReader {
 public:
  /// Throws TypeError when the value is no array of real numbers. Masked elements become NaN.
  explicit ArrayReader(const Argument& argument);

  Shape GetShape() const { return {array_.shape(), array_.shape() + array_.ndim()}; }
  /// Copies the array when writing to the other would spoil what is still to be read: when their
  /// memory overlaps, unless they are one and the same and `sameAllowed`.
  void DetachFrom(const py::array& other, bool sameAllowed);
  /// Starts reading, broadcast to `shape`.
  void Start(const Shape& shape);
  /// The next `count` numbers, in the unit of the library. Needs no interpreter lock.
  void Read(double* to, std::size_t count);

 private:
  /// Dimensions of which each is read to its end before the one before it moves on.
  struct Axis {
    std::size_t size;
    std::ptrdiff_t stride;  // bytes
    std::size_t position = 0;
  };

  py::array array_;
  double factor_, limit_;
  const char* at_ = nullptr;
  std::vector<Axis> axes_;
};

/// The shape that all arguments are broadcast to. Throws Error when there is none.
Shape BroadcastShape(std::span<const Argument> arguments, std::span<const ArrayReader> readers);

/// `out` as a tuple of `count` arrays that can take results of that shape, or new ones when it is
/// None. Throws TypeError, or Error for arrays that overlap.
std::vector<py::array_t<double>> ResultArrays(const py::object& out, std::size_t count,
                                              const Shape& shape);

/// Whether all are plain numbers, written to `numbers` then, in the units of the library.
bool AllNumbers(std::span<const Argument> arguments, double* numbers);

py::object TupleOf(std::span<const py::object> results);

/// A new one-dimensional array.
py::array_t<double> ArrayOf(const std::vector<double>& values);

inline void Multiply(double* column, std::size_t count, double factor) {
  for (std::size_t i = 0; i < count; ++i) column[i] *= factor;
}

/// Factors of a pair and a height, in columns.
struct Factors {
  double pair = 1, height = 1;

  void Apply(double* const* columns, std::size_t count) const {
    if (pair != 1) Multiply(columns[0], count, pair), Multiply(columns[1], count, pair);
    if (height != 1) Multiply(columns[2], count, height);
  }
};

/// Cuts work without the interpreter lock into blocks that are short enough for a user who waits
/// for Ctrl-C: a point of a geoid model may take ten thousand times as long as one of a projection.
class Pace {
 public:
  /// Points of the next block.
  std::size_t Next(std::size_t left) const { return std::min(size_, left); }
  /// After a block: hears of signals every tenth of a second. Throws what their handlers raise.
  void Done();

 private:
  using Clock = std::chrono::steady_clock;
  std::size_t size_ = 16;
  Clock::time_point blockStart_ = Clock::now(), heard_ = blockStart_;
};

/// Runs `convert`, a callable (double* const* columns, std::size_t first, std::size_t count), over
/// all points: columns 0 to In − 1 hold the arguments of points first to first + count − 1, and it
/// leaves the results in columns 0 to Out − 1. It runs without the interpreter lock and must not
/// touch Python. Numbers alone give numbers, everything else gives arrays; one result is given
/// plain, several as a tuple. An interrupt ends the work; arrays of `out` then hold the results as
/// far as it came.
template <std::size_t Out, std::size_t In, class Convert>
py::object ConvertColumns(const std::array<Argument, In>& arguments, const py::object& out,
                          Convert&& convert) {
  constexpr std::size_t kColumns = std::max(In, Out);
  double* columns[kColumns];
  std::array<py::object, Out> results;
  if (double point[kColumns] = {}; out.is_none() && AllNumbers(arguments, point)) {
    for (std::size_t c = 0; c < kColumns; ++c) columns[c] = &point[c];
    convert(columns, std::size_t{0}, std::size_t{1});
    for (std::size_t c = 0; c < Out; ++c) results[c] = py::float_(point[c]);
    return TupleOf(results);
  }

  std::vector<ArrayReader> readers(arguments.begin(), arguments.end());
  const Shape shape = BroadcastShape(arguments, readers);
  auto arrays = ResultArrays(out, Out, shape);
  double* to[Out];
  for (std::size_t c = 0; c < Out; ++c) {
    to[c] = arrays[c].mutable_data();
    for (std::size_t i = 0; i < In && !out.is_none(); ++i) readers[i].DetachFrom(arrays[c], i == c);
    results[c] = arrays[c];
  }
  for (ArrayReader& reader : readers) reader.Start(shape);
  {
    const py::gil_scoped_release unlocked;
    const auto size = static_cast<std::size_t>(arrays[0].size());
    double spare[kColumns - Out + 1][kBlock];  // of arguments that no result follows
    Pace pace;
    for (std::size_t first = 0, count; first < size; first += count, pace.Done()) {
      count = pace.Next(size - first);
      for (std::size_t c = 0; c < kColumns; ++c)
        columns[c] = c < Out ? to[c] + first : spare[c - Out];
      for (std::size_t c = 0; c < In; ++c) readers[c].Read(columns[c], count);
      convert(columns, first, count);
    }
  }
  if (shape.empty() && out.is_none())
    for (std::size_t c = 0; c < Out; ++c) results[c] = py::float_(*to[c]);
  return TupleOf(results);
}

}  // namespace geomath_python
