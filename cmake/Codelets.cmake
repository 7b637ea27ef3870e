# The codelet compiler and the sources it writes into the build tree.
#
# The compiler always runs on the build host: in a native build it is an
# ordinary target; in a cross build it is built separately with the host's
# compiler, so the generated sources are the same as in a native build.
#
# What is exported is the compiler's table; the build only knows how many
# source files the codelets are spread over.

set(ZAMGEN_GEN_DIR ${PROJECT_BINARY_DIR}/generated)
set(ZAMGEN_CODELET_SHARDS 64)

if(CMAKE_CROSSCOMPILING)
  include(ExternalProject)
  set(ZAMGEN_HOST_CXX "c++" CACHE STRING "Host C++ compiler for the codelet compiler")
  set(_host_dir ${PROJECT_BINARY_DIR}/codegen-host)
  set(ZAMGEN_CODEGEN ${_host_dir}/zamgen-codegen)
  ExternalProject_Add(zamgen-codegen-host
    SOURCE_DIR ${PROJECT_SOURCE_DIR}/codegen
    BINARY_DIR ${_host_dir}
    CMAKE_ARGS -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER=${ZAMGEN_HOST_CXX}
               -DCMAKE_RUNTIME_OUTPUT_DIRECTORY=${_host_dir}
    INSTALL_COMMAND ""
    BUILD_ALWAYS ON
    BUILD_BYPRODUCTS ${ZAMGEN_CODEGEN})
  set(_codegen_dep zamgen-codegen-host)
else()
  add_subdirectory(codegen)
  zamgen_target_defaults(zamgen-codegen-core)
  zamgen_target_defaults(zamgen-codegen)
  set(ZAMGEN_CODEGEN $<TARGET_FILE:zamgen-codegen>)
  set(_codegen_dep zamgen-codegen)
endif()

# The sizes whose codelets go to codelets_checked.cpp, which sanitizer builds
# instrument: per family the butterflies and smallest members (2, 3, 4, 5),
# a power of two with its twiddles (16, 64), a direct prime (7, 11), Rader
# primes with cyclic and negacyclic convolutions (13, 17), prime-factor and
# prime-power lengths (12, 27, 45, 60); for the Walsh-Hadamard transform the
# same numbers are orders (2 to 7 of them are codelets).
set(ZAMGEN_CHECKED_SIZES "2,3,4,5,7,11,12,13,16,17,27,45,60,64" CACHE STRING "Sizes of the codelets in codelets_checked.cpp")

set(ZAMGEN_SHARD_SOURCES)
math(EXPR _last "${ZAMGEN_CODELET_SHARDS} - 1")
foreach(i RANGE ${_last})
  list(APPEND ZAMGEN_SHARD_SOURCES ${ZAMGEN_GEN_DIR}/codelets_${i}.cpp)
endforeach()
# The scalar bodies of the codelets (namespace zam::scalar).
set(ZAMGEN_BODY_SOURCES ${ZAMGEN_SHARD_SOURCES} ${ZAMGEN_GEN_DIR}/codelets_checked.cpp)
# Their vector bodies, in half as many files: SSE2 pairs, and AVX2 quads and
# pairs.
set(ZAMGEN_VECTOR_SOURCES)
set(ZAMGEN_AVX2_SOURCES)
math(EXPR _last "(${ZAMGEN_CODELET_SHARDS} + 1) / 2 - 1")
foreach(i RANGE ${_last})
  list(APPEND ZAMGEN_VECTOR_SOURCES ${ZAMGEN_GEN_DIR}/vcodelets_${i}.cpp)
  list(APPEND ZAMGEN_AVX2_SOURCES ${ZAMGEN_GEN_DIR}/vcodelets_avx2_${i}.cpp)
endforeach()
# The AVX-512 bodies (octets, quads and pairs) of the codelets that have one,
# in one file for eight codelet files (kShardsPerAvx512File in codegen/main.cpp).
set(ZAMGEN_AVX512_SOURCES)
math(EXPR _last "(${ZAMGEN_CODELET_SHARDS} + 7) / 8 - 1")
foreach(i RANGE ${_last})
  list(APPEND ZAMGEN_AVX512_SOURCES ${ZAMGEN_GEN_DIR}/vcodelets_avx512_${i}.cpp)
endforeach()
# The exported functions, each choosing a body.
set(ZAMGEN_GENERATED_SOURCES ${ZAMGEN_GEN_DIR}/codelet_exports.cpp)
# The straight-line blocks of the larger Walsh-Hadamard transforms.
list(APPEND ZAMGEN_GENERATED_SOURCES ${ZAMGEN_GEN_DIR}/wht_blocks.cpp)
# The straight-line kernels of the DCT-IV.
list(APPEND ZAMGEN_GENERATED_SOURCES ${ZAMGEN_GEN_DIR}/dct4_kernels.cpp)
set(ZAMGEN_MANIFEST ${ZAMGEN_GEN_DIR}/manifest.tsv)
set(ZAMGEN_EXPORTS ${ZAMGEN_GEN_DIR}/exports.txt)
set(ZAMGEN_SURFACE_FILES
  ${ZAMGEN_GEN_DIR}/include/zamgen_functions.h ${ZAMGEN_GEN_DIR}/include/zamgen_table.hpp
  ${ZAMGEN_GEN_DIR}/dispatch_tables.inc
  ${ZAMGEN_GEN_DIR}/registry.inc ${ZAMGEN_EXPORTS} ${ZAMGEN_GEN_DIR}/zamgen.def ${ZAMGEN_GEN_DIR}/zamgen.map
  ${ZAMGEN_GEN_DIR}/wht_blocks.hpp ${ZAMGEN_GEN_DIR}/dct4_kernels.hpp ${ZAMGEN_GEN_DIR}/dct4_lanes.hpp ${ZAMGEN_GEN_DIR}/wht_lanes.hpp
  ${ZAMGEN_GEN_DIR}/codelet_paths.hpp ${ZAMGEN_GEN_DIR}/codelet_paths.inc)

# The compiler rewrites a file only when its content changes; the stamp keeps
# the rule from running again when nothing changed.
add_custom_command(
  OUTPUT ${ZAMGEN_GEN_DIR}/codelets.stamp
  BYPRODUCTS ${ZAMGEN_GENERATED_SOURCES} ${ZAMGEN_BODY_SOURCES} ${ZAMGEN_VECTOR_SOURCES} ${ZAMGEN_AVX2_SOURCES}
             ${ZAMGEN_AVX512_SOURCES}
             ${ZAMGEN_MANIFEST}
             ${ZAMGEN_SURFACE_FILES}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${ZAMGEN_GEN_DIR}
  COMMAND ${ZAMGEN_CODEGEN} ${ZAMGEN_GEN_DIR} ${ZAMGEN_CODELET_SHARDS} ${ZAMGEN_CHECKED_SIZES}
  COMMAND ${CMAKE_COMMAND} -E touch ${ZAMGEN_GEN_DIR}/codelets.stamp
  DEPENDS ${_codegen_dep} ${ZAMGEN_CODEGEN}
  COMMENT "Generating codelets"
  VERBATIM)
add_custom_target(zamgen-codelets DEPENDS ${ZAMGEN_GEN_DIR}/codelets.stamp)
