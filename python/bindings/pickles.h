#pragma once

#include <pybind11/pybind11.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <new>
#include <string>

#include "files/words/user_error.h"
#include "python/bindings/made.h"

/// How the classes of the package are pickled: as what they are made of. What comes back is checked
/// like any other input, since a pickle may be damaged or made by hand.
namespace geomath_python {

namespace py = pybind11;

/// An object that a state must hold.
template <class Object>
std::shared_ptr<Object> PartOf(const py::handle& part) {
  auto object = part.cast<std::shared_ptr<Object>>();
  if (!object) throw geomath_files::UserError("a part is missing");
  return object;
}

/// The number that a state must hold; throws when it is not finite.
double FiniteOf(const py::handle& number);

/// Raises Error for the exception that is being handled, unless that is none of a wrong value.
[[noreturn]] void RaiseDamagedPickle(const std::string& className);

/// Gives a class its pickles, by every protocol: `state` tells what an object is made of, a tuple or
/// a dict, and `make` makes an object of that.
template <class Class, class State, class Object, class Given>
void DefinePickle(Class& of, State state, std::shared_ptr<Object> (*make)(const Given&)) {
  const std::string name = py::str(of.attr("__name__"));
  of.def(py::pickle(state, [make, name](const Given& given) {
    try {
      return make(given);
    } catch (...) {
      RaiseDamagedPickle(name);
    }
  }));
  // Protocols 0 and 1 would make the object without its class: they take the way of protocol 2.
  of.def("__reduce_ex__", [](const py::object& self, int protocol) {
    constexpr int kFirstWithNew = 2;
    return py::module_::import("builtins")
        .attr("object")
        .attr("__reduce_ex__")(self, std::max(protocol, kFirstWithNew));
  });
}

}  // namespace geomath_python
