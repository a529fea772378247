#pragma once

#include <stdexcept>

namespace geomath_files {

/// Something that the user has to put right before the program can go on. The text says what is
/// wrong, where, and what would be right.
class UserError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace geomath_files
