#include "python/bindings/pickles.h"

#include <cmath>

using geomath_files::UserError;

namespace geomath_python {

double FiniteOf(const py::handle& number) {
  const double value = number.cast<double>();
  if (!std::isfinite(value)) throw UserError("a number is not finite");
  return value;
}

void RaiseDamagedPickle(const std::string& className) {
  const std::string text = className + ": the pickle is damaged: ";
  try {
    throw;
  } catch (const UserError& error) {
    throw UserError(text + error.what());
  } catch (py::error_already_set& error) {  // not an interrupt, not a lack of memory
    if (!error.matches(PyExc_Exception) || error.matches(PyExc_MemoryError)) throw;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception&) {
  }
  throw UserError(text + "a part is missing or of another type");
}

}  // namespace geomath_python
