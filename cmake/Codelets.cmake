# The codelet compiler and the sources it writes into the build tree.
#
# The compiler always runs on the build host: in a native build it is an
# ordinary target; in a cross build it is built separately with the host's
# compiler, so the generated sources are the same as in a native build.

set(ZAMGEN_GEN_DIR ${CMAKE_BINARY_DIR}/generated)
set(ZAMGEN_LENGTHS)
foreach(n RANGE 2 64)
  list(APPEND ZAMGEN_LENGTHS ${n})
endforeach()

if(CMAKE_CROSSCOMPILING)
  include(ExternalProject)
  set(ZAMGEN_HOST_CXX "c++" CACHE STRING "Host C++ compiler for the codelet compiler")
  set(_host_dir ${CMAKE_BINARY_DIR}/codegen-host)
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
  set(ZAMGEN_CODEGEN $<TARGET_FILE:zamgen-codegen>)
  set(_codegen_dep zamgen-codegen)
endif()

set(ZAMGEN_GENERATED_SOURCES)
foreach(n IN LISTS ZAMGEN_LENGTHS)
  foreach(family dft_complex dft_real_fwd dft_real_inv hartley)
    list(APPEND ZAMGEN_GENERATED_SOURCES ${ZAMGEN_GEN_DIR}/${family}_${n}.cpp)
  endforeach()
endforeach()
set(ZAMGEN_MANIFEST ${ZAMGEN_GEN_DIR}/manifest.tsv)

# The compiler rewrites a file only when its content changes; the stamp keeps
# the rule from running again when nothing changed.
add_custom_command(
  OUTPUT ${ZAMGEN_GEN_DIR}/codelets.stamp
  BYPRODUCTS ${ZAMGEN_GENERATED_SOURCES} ${ZAMGEN_MANIFEST}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${ZAMGEN_GEN_DIR}
  COMMAND ${ZAMGEN_CODEGEN} ${ZAMGEN_GEN_DIR}
  COMMAND ${CMAKE_COMMAND} -E touch ${ZAMGEN_GEN_DIR}/codelets.stamp
  DEPENDS ${_codegen_dep} ${ZAMGEN_CODEGEN}
  COMMENT "Generating codelets"
  VERBATIM)
add_custom_target(zamgen-codelets DEPENDS ${ZAMGEN_GEN_DIR}/codelets.stamp)
