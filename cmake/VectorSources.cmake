# Wide vectors: a source named with claribox_vector_sources() is compiled once for each vector class below, with the
# class's instruction set, into a namespace of its own (src/simd/Vector.h). src/simd/VectorClass.h chooses at run time.
set(CLARIBOX_VECTOR_CLASSES Portable SSE2 AVX2 AVX512)
# On a processor without SSE g++ remarks that a vector is returned in another way than with it; nothing of ours crosses
# that border.
set(CLARIBOX_VECTOR_FLAGS_Portable -Wno-psabi)
set(CLARIBOX_VECTOR_FLAGS_SSE2 -msse2 -mfpmath=sse)
set(CLARIBOX_VECTOR_FLAGS_AVX2 -mavx2 -mfma -mfpmath=sse)
# g++ 12 takes the undefined source operands inside its own AVX-512 headers for uninitialised variables of ours.
set(CLARIBOX_VECTOR_FLAGS_AVX512 -mavx512f -mavx512bw -mavx512dq -mavx512vl -mavx512vnni -mfma -mfpmath=sse -mprefer-vector-width=512
  $<$<CXX_COMPILER_ID:GNU>:-Wno-uninitialized> $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)

# With its induction variables g++ 12 gives loads and stores an index register each; the processor then splits
# instructions that load and compute, and loops that fill its slots take up to a third longer.
set(CLARIBOX_VECTOR_FLAGS_ALL $<$<CXX_COMPILER_ID:GNU>:-fno-ivopts>)

# Paths are relative to the calling folder.
function(claribox_vector_sources)
  foreach(source IN LISTS ARGN)
    set_property(GLOBAL APPEND PROPERTY CLARIBOX_VECTOR_SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/${source})
  endforeach()
endfunction()

# Sets CLARIBOX_ALL_OBJECTS to the objects of `plain_objects` and of every vector class.
function(claribox_add_vector_objects plain_objects)
  get_property(sources GLOBAL PROPERTY CLARIBOX_VECTOR_SOURCES)
  # In loops that it vectorises itself g++ 12 fuses the multiplications and additions of complex numbers, in spite of
  # -ffp-contract=off. The transforms' vectors are written out; DriverTest.EveryLayoutEqualsTheDefinition... would notice.
  set(transforms ${sources})
  list(FILTER transforms INCLUDE REGEX "/src/dft/")
  set(flags $<$<CXX_COMPILER_ID:GNU>:-fno-tree-loop-vectorize>)
  # Checks of every element that a pass has in registers make a compiler take a minute a file. Those of addresses stay.
  if(CMAKE_CXX_FLAGS MATCHES "-fsanitize=address")
    list(APPEND flags -fno-sanitize=undefined $<$<CXX_COMPILER_ID:GNU>:--param=asan-stack=0>)
  endif()
  set_source_files_properties(${transforms} PROPERTIES COMPILE_OPTIONS "${flags}")
  set(all $<TARGET_OBJECTS:${plain_objects}>)
  foreach(class IN LISTS CLARIBOX_VECTOR_CLASSES)
    set(target claribox_vector_${class})
    add_library(${target} OBJECT ${sources})
    target_link_libraries(${target} PRIVATE claribox_flags)
    target_include_directories(${target} PRIVATE include src)
    target_compile_definitions(${target} PRIVATE CLARIBOX_VECTOR_CLASS=${class} CLARIBOX_VECTOR_${class})
    target_compile_options(${target} PRIVATE ${CLARIBOX_VECTOR_FLAGS_${class}} ${CLARIBOX_VECTOR_FLAGS_ALL})
    list(APPEND all $<TARGET_OBJECTS:${target}>)
  endforeach()
  set(CLARIBOX_ALL_OBJECTS ${all} PARENT_SCOPE)
endfunction()
