// Places in tables of kernels, for entry points.
#pragma once

#include <type_traits>

#include "zmotypes.h"

namespace zmo {

// Tables by element type hold 8u, 16u and 32f in this order.
template <class T>
constexpr int typeIndex = std::is_same_v<T, Zmo8u>    ? 0
                          : std::is_same_v<T, Zmo16u> ? 1
                                                      : 2;

}  // namespace zmo
