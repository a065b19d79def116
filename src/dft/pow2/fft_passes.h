// Passes of a power-of-two plan over one line or a batch. For vector sources only.
#pragma once

#include "dft/lane_complex.h"
#include "dft/plans/dft_plan.h"

namespace dft::CLARIBOX_VECTOR_CLASS {} // namespace dft::CLARIBOX_VECTOR_CLASS
