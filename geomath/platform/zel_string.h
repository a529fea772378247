#pragma once

#include <compare>
#include <string>

/// A string of names and keys. Comparison is case-sensitive, character by character, and never by
/// address.
template <class Char>
class CZelStringT {
 public:
  CZelStringT() = default;
  /// A null pointer gives the empty string.
  CZelStringT(const Char* text) : text_(text ? text : EmptyText()) {}

  /// 0 when equal, otherwise negative or positive as the first difference says. Null compares as
  /// the empty string.
  int Compare(const Char* other) const { return text_.compare(other ? other : EmptyText()); }

  /// By text, as Compare.
  friend bool operator==(const CZelStringT& left, const CZelStringT& right) {
    return left.Compare(right) == 0;
  }
  friend bool operator==(const CZelStringT& left, const Char* right) {
    return left.Compare(right) == 0;
  }
  friend std::strong_ordering operator<=>(const CZelStringT& left, const CZelStringT& right) {
    return left.Compare(right) <=> 0;
  }
  friend std::strong_ordering operator<=>(const CZelStringT& left, const Char* right) {
    return left.Compare(right) <=> 0;
  }

  /// The characters, ended by a zero, owned by this string.
  operator const Char*() const { return text_.c_str(); }

 private:
  static const Char* EmptyText() {
    static constexpr Char kEmpty[] = {Char{}};
    return kEmpty;
  }

  std::basic_string<Char> text_;
};
