# The flags of all our own code, carried by one interface target. Nothing of it reaches a host.
add_library(claribox_flags INTERFACE)
target_compile_options(claribox_flags INTERFACE
  -Wall -Wextra -Wconversion -Wshadow
  $<$<BOOL:${CLARIBOX_WERROR}>:-Werror>
  # A fused multiply-add rounds once where an operation as written rounds twice, and only some processors have it:
  # results must be the same bytes on all of them. Where one rounding is meant, the source says so (MultiplyAdd in
  # src/simd/Vector.h). For the same reason there is no -ffast-math anywhere.
  -ffp-contract=off
  # g++ 12 loses the rounding of a pair of doubles to float when its straight-line vectoriser joins the two stores;
  # tests/kernels/FloatStoreTest.cpp would notice.
  $<$<CXX_COMPILER_ID:GNU>:-fno-tree-slp-vectorize>
  # The x87 unit of 32-bit builds keeps results wider than their type until they are stored.
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<EQUAL:${CMAKE_SIZEOF_VOID_P},4>>:-ffloat-store>)
