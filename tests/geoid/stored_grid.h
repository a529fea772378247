#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <utility>

#include "geomath/geoid/regional_geoid.h"

namespace zel_cs::geomath {

/// Heights by row from the south and column from the west.
using Surface = std::function<double(int row, int column)>;

/// How a class stores its nodes.
struct Storage {
  enum class Value { real, swappedReal, word, integer };
  Value value = Value::real;
  bool northFirst = false;
  int header = 0;       // bytes before each row
  int padding = 0;      // bytes after each row
  double perMetre = 1;  // stored integers in a metre
};

/// A small grid with exactly representable geometry, in a buffer of exactly its size, so that the
/// sanitizers see every read beyond it.
struct StoredGrid {
  static constexpr double kSouth = 0.5, kWest = 0.25, kLatStep = 1.0 / 64, kLonStep = 1.0 / 128;

  int NX, NY;
  Storage storage;
  std::size_t rowBytes;
  std::unique_ptr<unsigned char[]> bytes;

  StoredGrid(int columns, int rows, const Surface& z, Storage how = {})
      : NX(columns), NY(rows), storage(how) {
    rowBytes = static_cast<std::size_t>(how.header + how.padding + NX * Size());
    bytes = std::make_unique<unsigned char[]>(rowBytes * static_cast<std::size_t>(NY));
    for (int r = 0; r < NY; ++r)
      for (int c = 0; c < NX; ++c) Set(r, c, z(r, c));
  }

  int Size() const { return storage.value == Storage::Value::word ? 2 : 4; }

  unsigned char* Node(int row, int column) {
    const int stored = storage.northFirst ? NY - 1 - row : row;
    return bytes.get() + static_cast<std::size_t>(stored) * rowBytes +
           static_cast<std::size_t>(storage.header + column * Size());
  }

  void Set(int row, int column, double metres) {
    const auto put = [at = Node(row, column)](auto value) {
      std::memcpy(at, &value, sizeof value);
    };
    switch (storage.value) {
      case Storage::Value::word:
        return put(static_cast<std::int16_t>(metres * storage.perMetre));
      case Storage::Value::integer:
        return put(static_cast<std::int32_t>(metres * storage.perMetre));
      default:
        put(static_cast<float>(metres));
    }
    if (storage.value == Storage::Value::swappedReal) {
      unsigned char* at = Node(row, column);
      std::swap(at[0], at[3]);
      std::swap(at[1], at[2]);
    }
  }

  TGridRgn Geometry() const {
    return {{kSouth, (NY - 1) * kLatStep, kWest, (NX - 1) * kLonStep}, kLatStep, kLonStep};
  }

  RegionalGeoidData Record(double scale = 1.0) const {
    RegionalGeoidData record(Geometry(), NX, NY, bytes.get(), 0, L"", L"", 4, 1.0, L"");
    record.rowPadding = storage.padding;
    record.valueSize = Size();
    record.scale = scale;
    return record;
  }
};

/// One query at (x, y), in steps from the south-western node; the slot holds `before` first.
struct Answer {
  double height;
  long code;
};

inline Answer HeightAt(const RegionalGeoid& model, double x, double y, double before = 0) {
  const TAbstractPoint3<double> point(StoredGrid::kSouth + x * StoredGrid::kLatStep,
                                      StoredGrid::kWest + y * StoredGrid::kLonStep, 0);
  Answer answer{before, 0};
  answer.code = model.CountHeight(&point, &answer.height, 1);
  return answer;
}

}  // namespace zel_cs::geomath
