#pragma once

#include <pybind11/pybind11.h>

#include <memory>
#include <string>

/// Keeps methods away from objects that were never made: `X.__new__(X)`, and an object of a derived
/// class whose __init__ has not called that of X yet. Python hands out such objects; pybind11 would
/// pass uninitialised memory on. They raise TypeError.
namespace geomath_python {

/// True for the classes that stand behind those of the package.
template <class Object>
inline constexpr bool kBound = false;

template <class Object>
concept Bound = kBound<Object>;

/// Throws TypeError when the value is an object of a bound class that was never made.
inline void RequireMade(pybind11::handle value) {
  namespace detail = pybind11::detail;
  const auto base = reinterpret_cast<PyTypeObject*>(detail::get_internals().instance_base);
  if (!PyObject_TypeCheck(value.ptr(), base)) return;
  auto* const instance = reinterpret_cast<detail::instance*>(value.ptr());
  for (const detail::value_and_holder& part : detail::values_and_holders(instance))
    if (!part.holder_constructed())
      throw pybind11::type_error(std::string(Py_TYPE(value.ptr())->tp_name) +
                                 ": this object was never made; its __init__ has not run");
}

}  // namespace geomath_python

namespace pybind11::detail {

template <geomath_python::Bound Object>
class type_caster<Object> : public type_caster_base<Object> {
 public:
  bool load(handle source, bool convert) {
    geomath_python::RequireMade(source);
    return type_caster_base<Object>::load(source, convert);
  }
};

template <geomath_python::Bound Object>
class type_caster<std::shared_ptr<Object>>
    : public copyable_holder_caster<Object, std::shared_ptr<Object>> {
 public:
  bool load(handle source, bool convert) {
    geomath_python::RequireMade(source);
    return copyable_holder_caster<Object, std::shared_ptr<Object>>::load(source, convert);
  }
};

}  // namespace pybind11::detail
