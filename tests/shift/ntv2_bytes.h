#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <span>
#include <string>
#include <vector>

/// A made-up sub-grid in the terms of an NTv2 file: limits and steps in its units, longitudes
/// positive to the west, shifts from functions of latitude and positive-west longitude.
struct Ntv2SubGrid {
  std::string name, parent;
  double south, north, east, west, latStep, lonStep;
  std::function<double(double, double)> latShift, lonShift;
  int countError = 0;
};

/// How an NTv2 file is written.
struct Ntv2Style {
  std::string type = "SECONDS";
  bool bigEndian = false;
  bool end = true;
};

inline std::vector<std::byte> Ntv2Bytes(std::span<const Ntv2SubGrid> grids,
                                        const Ntv2Style& style = {}) {
  std::vector<std::byte> file;
  const auto append = [&](auto value) {
    std::byte bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    const bool nativeBig = std::endian::native == std::endian::big;
    if (nativeBig != style.bigEndian) std::reverse(bytes, bytes + sizeof value);
    file.insert(file.end(), bytes, bytes + sizeof value);
  };
  const auto text = [&](std::string words) {
    words.resize(8, ' ');
    for (const char c : words) file.push_back(static_cast<std::byte>(c));
  };
  const auto integer = [&](const char* key, std::size_t value) {
    text(key);
    append(static_cast<std::uint32_t>(value));
    append(std::uint32_t{0xdeadbeef});  // padding is anything
  };
  const auto words = [&](const char* key, const std::string& value) {
    text(key);
    text(value);
  };
  const auto number = [&](const char* key, double value) {
    text(key);
    append(value);
  };

  integer("NUM_OREC", 11);
  integer("NUM_SREC", 11);
  integer("NUM_FILE", grids.size());
  words("GS_TYPE", style.type);
  words("VERSION", "TEST");
  words("SYSTEM_F", "OLD");
  words("SYSTEM_T", "NEW");
  number("MAJOR_F", 6378206.4);
  number("MINOR_F", 6356583.8);
  number("MAJOR_T", 6378137.0);
  number("MINOR_T", 6356752.314);
  for (const Ntv2SubGrid& grid : grids) {
    const auto rows = static_cast<int>((grid.north - grid.south) / grid.latStep + 1.5);
    const auto columns = static_cast<int>((grid.west - grid.east) / grid.lonStep + 1.5);
    words("SUB_NAME", grid.name);
    words("PARENT", grid.parent);
    words("CREATED", "20260101");
    words("UPDATED", "20260101");
    number("S_LAT", grid.south);
    number("N_LAT", grid.north);
    number("E_LONG", grid.east);
    number("W_LONG", grid.west);
    number("LAT_INC", grid.latStep);
    number("LONG_INC", grid.lonStep);
    integer("GS_COUNT", static_cast<std::size_t>(rows * columns + grid.countError));
    for (int i = 0; i < rows; ++i)
      for (int j = 0; j < columns; ++j) {
        const double lat = grid.south + i * grid.latStep, lonWest = grid.east + j * grid.lonStep;
        append(static_cast<float>(grid.latShift(lat, lonWest)));
        append(static_cast<float>(grid.lonShift(lat, lonWest)));
        append(0.25F);
        append(static_cast<float>(i));
      }
  }
  if (style.end) {
    text("END");
    text("anything");
  }
  return file;
}
