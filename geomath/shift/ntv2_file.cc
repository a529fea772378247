#include "geomath/shift/ntv2_file.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <exception>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "geomath/base/angle.h"
#include "geomath/platform/file_text.h"

namespace zel_cs::geomath {
namespace {

constexpr std::size_t kRecord = 16;  // bytes: a key of 8, a value of 8; nodes are as long
constexpr std::size_t kHeaderRecords = 11;
constexpr std::size_t kHeader = kHeaderRecords * kRecord;
constexpr double kMaxNodesOfAxis = 1e6;
constexpr double kStepRounding = 0.01;  // steps: limits and increments are rounded by less

/// Ends the reading of a file; caught before it leaves this source.
struct Fault {
  Ntv2Error error;
};

[[noreturn]] void Fail(Ntv2Fault fault, std::size_t offset, std::string reason) {
  throw Fault{{fault, offset, std::move(reason)}};
}

std::string Quoted(std::string_view text) { return "'" + std::string(text) + "'"; }

/// The records of a file in its byte order.
class Records {
 public:
  explicit Records(std::span<const std::byte> file) : file_(file) {
    constexpr std::uint32_t kOrder = kHeaderRecords;
    Require(0, kRecord, "the overview");
    if (Text(0) != "NUM_OREC") Fail(Ntv2Fault::notNtv2, 0, "does not begin with NUM_OREC");
    if (Integer(0) == kOrder) return;
    swapped_ = true;
    if (Integer(0) != kOrder) Fail(Ntv2Fault::notNtv2, 8, "NUM_OREC is not 11");
  }

  /// Fails unless `size` bytes from `offset` on are there.
  void Require(std::size_t offset, std::size_t size, const std::string& what) const {
    if (offset <= file_.size() && size <= file_.size() - offset) return;
    Fail(Ntv2Fault::truncated, file_.size(), "ends inside " + what);
  }

  /// Fails unless the record at `offset` has this key.
  void RequireKey(std::size_t offset, std::string_view key) const {
    if (Trimmed(Text(offset)) != key)
      Fail(Ntv2Fault::header, offset, "has no " + std::string(key) + " where it belongs");
  }

  /// The eight characters at `offset`.
  std::string_view Text(std::size_t offset) const {
    return {reinterpret_cast<const char*>(file_.data() + offset), 8};
  }
  /// Without trailing blanks and zeros.
  static std::string_view Trimmed(std::string_view text) {
    while (!text.empty() && (text.back() == ' ' || text.back() == '\0')) text.remove_suffix(1);
    return text;
  }
  std::string_view TextOf(std::size_t record) const { return Text(record + 8); }
  std::uint32_t Integer(std::size_t record) const { return Value<std::uint32_t>(record + 8); }
  double Number(std::size_t record) const {
    return std::bit_cast<double>(Value<std::uint64_t>(record + 8));
  }
  float NodeNumber(std::size_t offset) const {
    return std::bit_cast<float>(Value<std::uint32_t>(offset));
  }

  std::size_t Size() const { return file_.size(); }

 private:
  template <class Bits>
  Bits Value(std::size_t offset) const {
    unsigned char bytes[sizeof(Bits)];
    std::memcpy(bytes, file_.data() + offset, sizeof bytes);
    if (swapped_) std::reverse(bytes, std::end(bytes));
    return std::bit_cast<Bits>(bytes);
  }

  std::span<const std::byte> file_;
  bool swapped_ = false;
};

/// A sub-grid as the file describes it, longitudes positive to the west as there.
struct SubGrid {
  std::string_view name, parent;  // as stored, blanks included
  std::size_t nodes;              // where they start
  double south, east, northStep, westStep;
  std::size_t rows, columns;
};

class Reader {
 public:
  explicit Reader(std::span<const std::byte> file) : records_(file) {}

  Ntv2Overview ReadOverview() {
    constexpr std::string_view kKeys[] = {"NUM_OREC", "NUM_SREC", "NUM_FILE", "GS_TYPE",
                                          "VERSION",  "SYSTEM_F", "SYSTEM_T"};
    records_.Require(0, kHeader, "the overview");
    for (std::size_t i = 0; i < 4; ++i) records_.RequireKey(i * kRecord, kKeys[i]);
    if (records_.Integer(kRecord) != kHeaderRecords)
      Fail(Ntv2Fault::header, kRecord, "NUM_SREC is not 11");
    unit_ = UnitOf(Records::Trimmed(records_.TextOf(3 * kRecord)));
    const auto text = [&](std::size_t record) {
      return std::string(Records::Trimmed(records_.TextOf(record * kRecord)));
    };
    const auto number = [&](std::size_t record) { return records_.Number(record * kRecord); };
    return {text(4), text(5), text(6), number(7), number(8), number(9), number(10)};
  }

  ShiftGridDefinition ReadGrids() {
    const std::uint32_t count = records_.Integer(2 * kRecord);
    if (count < 1 || count > ShiftGrid::kMaxParts)
      Fail(Ntv2Fault::header, 2 * kRecord, "NUM_FILE is not between 1 and 4096");
    std::size_t at = kHeader;
    for (std::uint32_t i = 0; i < count; ++i) {
      grids_.push_back(ReadHeader(at));
      at = grids_.back().nodes + grids_.back().rows * grids_.back().columns * kRecord;
    }
    ShiftGridDefinition definition;
    definition.horizontalUnit = unit_;
    for (const SubGrid& grid : grids_) definition.parts.push_back(ReadNodes(grid));
    return definition;
  }

 private:
  static double UnitOf(std::string_view type) {
    if (type == "SECONDS") return kRadPerArcSecond;
    if (type == "MINUTES") return kRadPerDeg / 60;
    if (type == "DEGREES") return kRadPerDeg;
    Fail(Ntv2Fault::header, 3 * kRecord, "GS_TYPE is " + Quoted(type));
  }

  SubGrid ReadHeader(std::size_t at) const {
    const std::string ordinal = "the header of sub-grid " + std::to_string(grids_.size() + 1);
    records_.Require(at, kHeader, ordinal);
    records_.RequireKey(at, "SUB_NAME");
    records_.RequireKey(at + kRecord, "PARENT");
    records_.RequireKey(at + 10 * kRecord, "GS_COUNT");
    const auto number = [&](std::size_t record) { return records_.Number(at + record * kRecord); };
    SubGrid grid{records_.TextOf(at),
                 records_.TextOf(at + kRecord),
                 at + kHeader,
                 number(4),
                 number(6),
                 number(8),
                 number(9),
                 0,
                 0};
    const std::string name = "sub-grid " + Quoted(Records::Trimmed(grid.name)) + ": ";
    grid.rows = NodesOf(grid.south, number(5), grid.northStep, name + "S_LAT, N_LAT, LAT_INC", at);
    grid.columns =
        NodesOf(grid.east, number(7), grid.westStep, name + "E_LONG, W_LONG, LONG_INC", at);
    records_.Require(grid.nodes, grid.rows * grid.columns * kRecord, name + "its nodes");
    return grid;
  }

  /// Nodes of an axis between two limits.
  std::size_t NodesOf(double from, double to, double step, const std::string& what,
                      std::size_t at) const {
    const double steps = (to - from) / step, whole = std::round(steps);
    const double turn = 2 * kTwoPi / unit_;  // no limit lies farther
    const bool sound = step > 0 && std::abs(from) <= turn && std::abs(to) <= turn && whole >= 1 &&
                       whole < kMaxNodesOfAxis && std::abs(steps - whole) <= kStepRounding;
    if (!sound) Fail(Ntv2Fault::extent, at, what + " make no grid");
    return static_cast<std::size_t>(whole) + 1;
  }

  /// Rows run from the south, nodes in a row from the east to the west in the file.
  ShiftGridPart ReadNodes(const SubGrid& grid) const {
    ShiftGridPart part;
    part.name = Records::Trimmed(grid.name);
    part.level = LevelOf(grid);
    part.south = grid.south * unit_;
    part.west = -(grid.east + static_cast<double>(grid.columns - 1) * grid.westStep) * unit_;
    part.northStep = grid.northStep * unit_;
    part.eastStep = grid.westStep * unit_;
    part.rows = static_cast<int>(grid.rows);
    part.columns = static_cast<int>(grid.columns);
    part.values.resize(grid.rows * grid.columns * 2);
    part.accuracies.resize(part.values.size());
    std::size_t to = 0;
    for (std::size_t row = 0; row < grid.rows; ++row)
      for (std::size_t column = grid.columns; column-- > 0; to += 2) {
        const std::size_t node = grid.nodes + (row * grid.columns + column) * kRecord;
        part.values[to] = records_.NodeNumber(node);
        part.values[to + 1] = -records_.NodeNumber(node + 4);
        part.accuracies[to] = records_.NodeNumber(node + 8);
        part.accuracies[to + 1] = records_.NodeNumber(node + 12);
      }
    return part;
  }

  /// How many parents a sub-grid has.
  int LevelOf(const SubGrid& grid) const {
    std::string_view parent = grid.parent;
    for (std::size_t level = 0; level <= grids_.size(); ++level) {
      if (Records::Trimmed(parent) == "NONE") return static_cast<int>(level);
      const auto found = std::find_if(grids_.begin(), grids_.end(),
                                      [&](const SubGrid& other) { return other.name == parent; });
      if (found == grids_.end()) break;
      parent = found->parent;
    }
    Fail(Ntv2Fault::parent, grid.nodes - kHeader + kRecord,
         "sub-grid " + Quoted(Records::Trimmed(grid.name)) + ": its parent " +
             Quoted(Records::Trimmed(parent)) + " is not in the file, or its own descendant");
  }

  Records records_;
  double unit_ = 0;  // radians
  std::vector<SubGrid> grids_;
};

std::string ReadBytes(const char* path) {
  FileFault fault;
  if (auto text = TextOfFile(path, std::numeric_limits<std::uintmax_t>::max(), fault))
    return *std::move(text);
  switch (fault.kind) {
    case FileFault::notOpened:
      Fail(Ntv2Fault::unreadable, 0, "cannot be opened");
    case FileFault::notRead:
      Fail(Ntv2Fault::unreadable, 0, "cannot be read");
    default:
      Fail(Ntv2Fault::unreadable, 0,
           fault.system.empty() ? "is not a regular file" : std::move(fault.system));
  }
}

/// Runs `read`, which gives a grid, and turns what it throws into an error.
template <class Read>
std::unique_ptr<ShiftGrid> Guarded(Ntv2Error* error, Read read) noexcept {
  Ntv2Error found;
  try {
    return read();
  } catch (Fault& fault) {
    found = std::move(fault.error);
  } catch (const std::exception&) {  // from the standard library: no memory
    found.fault = Ntv2Fault::noMemory;
  }
  if (error) *error = std::move(found);
  return nullptr;
}

std::unique_ptr<ShiftGrid> Parse(std::span<const std::byte> file, Ntv2Overview* overview) {
  Reader reader(file);
  Ntv2Overview read = reader.ReadOverview();
  std::string reason;
  std::unique_ptr<ShiftGrid> grid = ShiftGrid::Make(reader.ReadGrids(), &reason);
  if (!grid) Fail(Ntv2Fault::extent, kHeader, std::move(reason));
  if (overview) *overview = std::move(read);
  return grid;
}

}  // namespace

std::unique_ptr<ShiftGrid> ReadNtv2File(const char* path, Ntv2Error* error,
                                        Ntv2Overview* overview) noexcept {
  return Guarded(error, [&] {
    const std::string bytes = ReadBytes(path);
    return Parse(std::as_bytes(std::span(bytes)), overview);
  });
}

std::unique_ptr<ShiftGrid> ParseNtv2(std::span<const std::byte> file, Ntv2Error* error,
                                     Ntv2Overview* overview) noexcept {
  return Guarded(error, [&] { return Parse(file, overview); });
}

}  // namespace zel_cs::geomath
