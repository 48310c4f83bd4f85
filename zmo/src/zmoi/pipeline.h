// Row and column filters between rows of the caller's: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"

namespace zmo {

// Weights are floats for 32f, else 16-bit integers. The anchor is the tap that lies on the pixel.
struct PipelineTaps {
    const void* weights;
    ptrdiff_t size;
    ptrdiff_t anchor;
    int64_t divisor;
    ptrdiff_t channels;
};

// dst is an array of roi.height pointers to rows; buffer holds a row with its border.
using RowPipelineKernel = void (*)(Source src, void* const* dst, Region roi, Border border,
                                   const PipelineTaps* taps, void* buffer);
// src is an array of roi.height + taps->size - 1 pointers to rows.
using ColumnPipelineKernel = void (*)(const void* const* src, Target dst, Region roi,
                                      const PipelineTaps* taps);

struct PipelineKernels {
    RowPipelineKernel row8u16s;
    RowPipelineKernel row16u;
    RowPipelineKernel row16s;
    RowPipelineKernel row32f;
    RowPipelineKernel rowLow16s;
    ColumnPipelineKernel column16u;
    ColumnPipelineKernel column16s;
    ColumnPipelineKernel column16s8u;
    ColumnPipelineKernel column16s8s;
    ColumnPipelineKernel column32f;
    ColumnPipelineKernel columnLow16s;
};
ZMO_LEVEL_TABLES(PipelineKernels, pipelineKernels);

}  // namespace zmo
