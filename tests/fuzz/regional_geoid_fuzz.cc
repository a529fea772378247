// libFuzzer: any grid geometry and any points through every interpolator, over a buffer of exactly
// the size that the record describes.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <vector>

#include "geomath/geomath.h"

using namespace zel_cs::geomath;

namespace {

/// Takes numbers from the fuzzer's bytes; zeros when they are used up.
class Bytes {
 public:
  Bytes(const std::uint8_t* data, std::size_t size) : at_(data), left_(size) {}

  template <class Value>
  Value Take() {
    Value value{};
    const std::size_t bytes = std::min(left_, sizeof value);
    if (bytes > 0) std::memcpy(&value, at_, bytes);
    at_ += bytes;
    left_ -= bytes;
    return value;
  }

  /// Any double at all, or one of the size of a grid, so that both kinds are common.
  double Number() {
    const auto kind = Take<std::uint8_t>();
    return kind & 1 ? Take<double>() : Take<std::int16_t>() / 256.0 / (kind & 2 ? 64 : 1);
  }

  std::size_t Left() const { return left_; }

 private:
  const std::uint8_t* at_;
  std::size_t left_;
};

template <class Model>
std::unique_ptr<RegionalGeoid> Make(const RegionalGeoidData& data) {
  return std::make_unique<Model>(data);
}

constexpr std::unique_ptr<RegionalGeoid> (*kMakers[])(const RegionalGeoidData&) = {
    Make<RegionalGeoid>,
    Make<RegGeoid2x2SW>,
    Make<RegGeoid2x2NW>,
    Make<RegGeoid2x2Denmark>,
    Make<RegGeoidInterpalation2>,
    Make<RegGeoidIntrpNIreland2>,
    Make<RegGeoidInterpalation3MACStyle>,
    Make<RegGeoid95Interpalation3>,
    Make<RegGeoidSwedishInterpalation3>,
    Make<RegGeoid3x3NWInterpalation>,
    Make<RegGeoidInterpalation4>,
    Make<RegGeoidInterpalation4x4SW>,
    Make<RegGeoidInterpalation4x4NW>,
    Make<RegGeoidIntrp_Lagrange4x4SW>,
    Make<RegGeoidIntrp_Spline4x4SW>,
    Make<RegGeoidInterpalation_GG2008SW>,
    Make<RegGeoidPolinomialSingapore>,
    Make<RegGeoidKrigingIntrp>,
};
constexpr std::size_t kRowHeaderMaker = 7, kPolynomialMaker = 16;  // their storage differs

/// Bytes that the record and its class describe. Beyond `kLargest` there is nothing to allocate.
constexpr double kLargest = 1 << 20;
double BufferSize(const RegionalGeoidData& record, std::size_t maker) {
  if (maker == kPolynomialMaker) return 22 * sizeof(float);
  if (record.NX <= 0 || record.NY <= 0) return 0;
  const double header = maker == kRowHeaderMaker ? 4 : 0;
  const bool integers = kMakers[maker] == Make<RegGeoid3x3NWInterpalation>;
  const double values = (integers ? record.valueSize : 4.0) * record.NX;
  const double padding = std::trunc(record.rowPadding);
  const double row = std::max(values, 0.0) + header + (padding > 0 ? padding : 0);
  return row * record.NY;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Bytes bytes(data, size);
  const std::size_t maker = bytes.Take<std::uint8_t>() % std::size(kMakers);
  const auto shape = bytes.Take<std::uint8_t>();
  RegionalGeoidData record;
  for (int field = 0; field < 4; ++field) record.grid[field] = bytes.Number();
  record.grid.latStep = bytes.Number();
  record.grid.lonStep = bytes.Number();
  record.NX = shape & 1 ? bytes.Take<std::int32_t>() : bytes.Take<std::int8_t>();
  record.NY = shape & 2 ? bytes.Take<std::int32_t>() : bytes.Take<std::int8_t>();
  record.rowPadding = shape & 4 ? bytes.Number() : 0;
  record.valueSize = shape & 8 ? bytes.Take<std::int8_t>() : shape & 16 ? 2 : 4;
  record.scale = shape & 32 ? bytes.Number() : 1;

  const double bufferSize = BufferSize(record, maker);
  if (!(bufferSize < kLargest)) record.NX = record.NY = 0;
  const auto length = bufferSize < kLargest ? static_cast<std::size_t>(bufferSize) : std::size_t{0};
  const auto buffer = std::make_unique<std::uint8_t[]>(length);
  for (std::size_t at = 0; at < length; ++at)
    buffer[at] = bytes.Left() > 0 ? bytes.Take<std::uint8_t>() : data[at % size];
  record.data = buffer.get();
  const auto model = kMakers[maker](record);

  std::vector<TAbstractPoint3<double>> points;
  for (const double u : {-0.5, -0.25, 0.0, 0.3, 0.5, 0.99, 1.0, 1.01, 1.25})
    for (const double v : {-0.01, 0.0, 0.4, 1.0, 1.2})
      points.emplace_back(record.grid.B0 + u * record.grid.dB, record.grid.L0 + v * record.grid.dL,
                          0.0);
  while (points.size() < 60) points.emplace_back(bytes.Number(), bytes.Number(), 0.0);
  std::vector<double> heights(points.size());
  const std::size_t rows = record.NY > 0 ? static_cast<std::size_t>(record.NY) : 1;
  const std::size_t stride = length / rows;  // INTRP3 is handed the true one
  model->CountHeight(points.data(), heights.data(), static_cast<int>(points.size()));
  for (TAbstractPoint3<double>& point : points) {
    double height = 0;
    model->CountHeight(&point, &height, 1);
    TGridRgn region = record.grid;
    model->INTRP3(record.data, static_cast<int>(stride), region, record.NY, record.NX, point,
                  height);
  }

  TGridRgn request = record.grid;
  if (shape & 128) request.B0 = bytes.Number();
  const double latNodes = request.dB / record.grid.latStep,
               lonNodes = request.dL / record.grid.lonStep;
  if (std::abs(latNodes) < 300 && std::abs(lonNodes) < 300) {
    std::vector<double> copied(302 * 302);
    model->CountHeightOnGrid(request, copied.data(), nullptr);
  }
  return 0;
}
