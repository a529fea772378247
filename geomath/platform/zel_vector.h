#pragma once

#include <vector>

/// The growable array of the interfaces that hand over lists.
template <class T>
using zel_vector = std::vector<T>;
