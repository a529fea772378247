#include "geomath/platform/wide_text.h"

#include <cstdlib>
#include <cwchar>
#include <cwctype>

namespace zel_cs::geomath {

void FreeWide(wchar_t* text) noexcept { std::free(text); }

#if defined(_WIN32)

wchar_t* DuplicateWide(const wchar_t* text) noexcept { return text ? _wcsdup(text) : nullptr; }

int CompareWideNoCase(const wchar_t* left, const wchar_t* right) noexcept {
  return _wcsicmp(left, right);
}

#else

wchar_t* DuplicateWide(const wchar_t* text) noexcept {
  if (!text) return nullptr;
  const std::size_t bytes = (std::wcslen(text) + 1) * sizeof(wchar_t);
  auto* copy = static_cast<wchar_t*>(std::malloc(bytes));
  if (copy) std::wmemcpy(copy, text, bytes / sizeof(wchar_t));
  return copy;
}

int CompareWideNoCase(const wchar_t* left, const wchar_t* right) noexcept {
  for (;; ++left, ++right) {
    const auto l = std::towlower(static_cast<std::wint_t>(*left));
    const auto r = std::towlower(static_cast<std::wint_t>(*right));
    if (l != r) return l < r ? -1 : 1;
    if (l == 0) return 0;
  }
}

#endif

}  // namespace zel_cs::geomath
