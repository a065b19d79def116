// Which of the four processor variants runs: selected at the first call, and the same for all jobs of a process.
#pragma once

#include "dft/base/variant.h"
