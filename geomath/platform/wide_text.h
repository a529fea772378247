#pragma once

#include <memory>

#include "geomath/export.h"

namespace zel_cs::geomath {

/// Copies a wide string into memory of the C runtime; null for null or when there is no memory.
GEOMATH_API wchar_t* DuplicateWide(const wchar_t* text) noexcept;

/// Gives back what DuplicateWide made: in the library, because a caller may have another C runtime. Null
/// is nothing.
GEOMATH_API void FreeWide(wchar_t* text) noexcept;

/// Compares without regard to letter case, letter by letter with towlower; 0 means equal.
GEOMATH_API int CompareWideNoCase(const wchar_t* left, const wchar_t* right) noexcept;

/// An owned, nullable wide string in memory of the C runtime. Copies duplicate the text.
class GEOMATH_API WideText {
 public:
  WideText() = default;
  /// A copy of `text`, or no text for null.
  explicit WideText(const wchar_t* text) : text_(DuplicateWide(text)) {}
  /// A copy of the text.
  WideText(const WideText& other) : WideText(other.Get()) {}
  /// A copy of the text.
  WideText& operator=(const WideText& other) {
    if (this != &other) Set(other.Get());
    return *this;
  }
  ~WideText() = default;

  /// The text, owned by this object, or null.
  wchar_t* Get() const { return text_.get(); }
  operator const wchar_t*() const { return text_.get(); }

  /// Stores a copy. The argument may point into the text that is stored now.
  void Set(const wchar_t* text) { text_ = Owner(DuplicateWide(text)); }

 private:
  struct Free {
    void operator()(wchar_t* text) const noexcept { FreeWide(text); }
  };
  using Owner = std::unique_ptr<wchar_t, Free>;

  Owner text_;
};

}  // namespace zel_cs::geomath
