#pragma once

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// The results of a batch as one number: equal on two machines when all of their bits are.
class Digest {
 public:
  /// NaN counts without its sign and payload, which processors choose.
  void Add(const double* values, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      const std::uint64_t bits =
          std::isnan(values[i]) ? kNotANumber : std::bit_cast<std::uint64_t>(values[i]);
      hash_ = (hash_ ^ bits) * kPrime;
      hash_ ^= hash_ >> 29;
    }
  }
  std::uint64_t Value() const { return hash_; }

 private:
  static constexpr std::uint64_t kNotANumber = 0x7ff8000000000000, kPrime = 0x9e3779b97f4a7c15;
  std::uint64_t hash_ = 0xcbf29ce484222325;
};

/// Random numbers that are the same everywhere (Steele, Lea and Flood 2014, SplitMix64).
class Random {
 public:
  /// Between `low` and `high`.
  double operator()(double low, double high) {
    state_ += 0x9e3779b97f4a7c15;
    std::uint64_t z = state_;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
    z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
    z ^= z >> 31;
    return low + (high - low) * (static_cast<double>(z >> 11) * 0x1p-53);
  }

 private:
  std::uint64_t state_ = 1;
};

/// Columns of a block of points.
constexpr std::size_t kDigestBlock = 1024;
struct Block {
  double columns[4][kDigestBlock];
  void Fill(Random& random, std::size_t column, double low, double high) {
    for (double& each : columns[column]) each = random(low, high);
  }
};

/// What is digested: `convert` makes an object of random parameters, fills a block of random points,
/// converts it by batches there and back, and adds the results of both.
struct DigestSubject {
  std::string name;
  std::function<void(Random&, Block&, Digest&)> convert;
};

void AppendProjections(std::vector<DigestSubject>& subjects);
void AppendTransformations(std::vector<DigestSubject>& subjects);
void AppendHeights(std::vector<DigestSubject>& subjects);
