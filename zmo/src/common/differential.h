// Masks of first derivatives, as entry points name them to kernels.
#pragma once

namespace zmo {

enum class Derivative { sobel3, sobel5, scharr3 };

}  // namespace zmo
