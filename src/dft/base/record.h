// The record of one dimension of a job, its codes, and the status of every operation.
#pragma once

#include "dft/base/complex.h"

#include <cstdint>

namespace dft {

/// Values of a descriptor's configuration fields, in one numbering.
enum DftCode : std::int32_t {
    DFT_COMMITTED = 30,       ///< `commit_state` after commit
    DFT_UNCOMMITTED = 31,     ///< `commit_state` after creation
    DFT_COMPLEX = 32,         ///< complex forward domain
    DFT_REAL = 33,            ///< real forward domain, one dimension only
    DFT_DOMAIN_RESERVED = 34, ///< recognised and refused with DFT_UNSUPPORTED
    DFT_SINGLE = 35,          ///< 32-bit floating elements
    DFT_DOUBLE = 36,          ///< 64-bit floating elements
    DFT_DEFAULT_37 = 37,      ///< `cfg_a`: carried, no path tests it
    DFT_DEFAULT_39 = 39,      ///< `cfg_b`: carried, no path tests it
    DFT_DEFAULT_40 = 40,      ///< `cfg_d`: carried, no path tests it
    DFT_DEFAULT_42 = 42,      ///< `cfg_c`: carried, no path tests it
    DFT_INPLACE = 43,         ///< the result overwrites the input
    DFT_NOT_INPLACE = 44,     ///< the result goes to a second buffer
    DFT_DEFAULT_46 = 46,      ///< `cfg_e`: carried, no path tests it
    DFT_ORDERED = 48,         ///< natural order; any other value leaves power-of-two spectra bit-reversed
    DFT_DEFAULT_51 = 51,      ///< `cfg_f`: carried, no path tests it
    DFT_DEFAULT_53 = 53,      ///< `cfg_g`: carried, no path tests it
    DFT_PACK_FULL = 54,       ///< packed layouts of real transforms: see real/packed_formats.h
    DFT_PACK_TIGHT = 55,
    DFT_PACK_NATIVE = 56,
};

/// Results of all operations.
enum DftStatus : std::int32_t {
    DFT_OK = 0,
    DFT_NO_MEMORY = 1,      ///< an allocation failed
    DFT_NOT_COMMITTED = 2,  ///< compute on a descriptor that was never committed
    DFT_BAD_ARGUMENT = 3,   ///< null handle or data; rank outside 1..7; a length below 1; unknown domain or precision
    DFT_BAD_DESCRIPTOR = 5, ///< the record does not begin with the letters D, F, T
    DFT_UNSUPPORTED = 6,    ///< reserved domain; real domain with a rank above 1; unknown packed format
    DFT_KERNEL_FAILURE = 7, ///< a plan refused for another reason than memory
};

inline constexpr int kMaximumRank = 7; ///< given; pinned by Descriptor.StatusesOfCreation

struct DftDescriptor;
template <typename Real>
struct BasicDftPlan;
template <typename Real>
struct BasicRealDftPlan;

/// A record's descriptor routine: transforms `length` elements at unit stride from input to output, which may be the
/// same, and applies the scale factor of its direction. `work` has the record's `workspace_need` bytes; if null, the
/// routine allocates engine memory. Power-of-two routines work in place on `input` alone. DFT_OK or another status.
using DftRoutine = std::int32_t (*)(void* input, void* output, DftDescriptor* record, void* work);

/// Threaded one-dimensional power-of-two routine, in place at unit stride on up to `threads` threads.
using DftThreadedRoutine = std::int32_t (*)(void* data, std::int32_t threads, DftDescriptor* record);

/// Real transform of a `BasicRealDftPlan` to or from one packed layout. A plan status (plans/dft_plan.h).
using DftPackRoutine = std::int32_t (*)(const void* input, void* output, const void* plan, void* work);

/// One record per dimension, in one block, the fastest-varying first (record 0, the head). Strides, offsets and
/// distances count elements. Created by `dfti_create_descriptor`; opaque to callers.
struct DftDescriptor {
    char tag[3]; ///< 'D', 'F', 'T'
    std::int32_t cfg_a;
    std::int32_t forward_domain;       ///< 32 or 33
    std::int32_t precision;            ///< 35 or 36
    std::int32_t number_of_transforms; ///< 1 at creation
    std::int32_t cfg_b, cfg_c, cfg_d;
    std::int32_t placement;                   ///< 43 at creation; any other value is out of place
    std::int32_t packed_format;               ///< 54 at creation
    std::int32_t input_stride, output_stride; ///< product of the lengths of all earlier records
    std::int32_t cfg_e, cfg_f;
    std::int32_t ordering; ///< 48 at creation
    std::int32_t cfg_g;
    std::int32_t rank; ///< 1 to 7
    std::int32_t dimension_index, length;
    Complex<float>* table_single; ///< twiddles of a power of two, else null
    Complex<double>* table_double;
    float forward_scale_single;
    double forward_scale_double;
    float backward_scale_single;
    double backward_scale_double;
    std::int32_t log2_length;                     ///< rounded down
    std::int32_t input_offset, output_offset;     ///< elements before the first; 0 at creation
    std::int32_t input_distance, output_distance; ///< from one transform of a job to the next; 0 at creation
    std::int32_t general_length;                  ///< 0: the power-of-two path serves this dimension; 1: a general plan
    std::int32_t running_product;                 ///< product of the lengths up to this record; in the head, of all
    DftDescriptor *previous, *next;
    DftRoutine backward_single, forward_single, backward_double, forward_double;
    DftThreadedRoutine c1d_back_dft, c1d_forw_dft, z1d_back_dft, z1d_forw_dft;
    DftPackRoutine real_pack_backward_single, real_pack_forward_single;
    DftPackRoutine real_pack_backward_double, real_pack_forward_double;
    std::int32_t longest_length;   ///< largest `length` of all records
    std::int32_t commit_state;     ///< 30 or 31; 30 also after a commit that failed
    std::int32_t unsupported_flag; ///< commit refuses with DFT_UNSUPPORTED where it reads 1
    BasicDftPlan<float>* plan_complex_single;
    BasicDftPlan<double>* plan_complex_double;
    BasicRealDftPlan<float>* plan_real_single;
    BasicRealDftPlan<double>* plan_real_double;
    std::int32_t workspace_need;  ///< bytes of work memory of this dimension's plan
    std::int32_t workspace_bytes; ///< head: the largest need of all records; 0 if that is 16 or less
    /// head: 1 if one call of record 0's routine is the whole job. A real job of several transforms has their number
    /// here.
    std::int32_t one_shot;
};

} // namespace dft
