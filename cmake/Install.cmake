# What `cmake --install` puts under the prefix: the libraries (with their
# SONAME links on ELF systems; DLLs in bin/ and import libraries in lib/ on
# Windows), the headers, the package configuration for find_package(zamgen)
# and the pkg-config files.  The Windows package (cpack) is the same tree.
include(CMakePackageConfigHelpers)

set(ZAMGEN_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/zamgen)

install(TARGETS zamgen zamcore EXPORT zamgenTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
# zamgen.h, zamcore.h and the C++ header; then the generated declarations
# (and whatever else the codelet compiler writes for users) beside them.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h" PATTERN "*.hpp")
install(DIRECTORY ${ZAMGEN_GEN_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(EXISTS ${PROJECT_SOURCE_DIR}/LICENSE)
  if(WIN32)
    install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION .)
  else()
    install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
  endif()
endif()

# find_package(zamgen): imported targets zamgen::zamgen (which links
# zamgen::zamcore) and zamgen::zamcore.
install(EXPORT zamgenTargets NAMESPACE zamgen:: DESTINATION ${ZAMGEN_CMAKE_DIR})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/zamgenConfig.cmake.in
  ${PROJECT_BINARY_DIR}/zamgenConfig.cmake INSTALL_DESTINATION ${ZAMGEN_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zamgenConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zamgenConfig.cmake ${PROJECT_BINARY_DIR}/zamgenConfigVersion.cmake
  DESTINATION ${ZAMGEN_CMAKE_DIR})

# pkg-config: zamgen.pc requires zamcore.pc, so `pkg-config --libs zamgen`
# names both libraries.  The prefix is the one installed into (also when
# given with `cmake --install --prefix`), so the files are written at install
# time from templates that hold everything else.
if(WIN32)
  set(ZAMGEN_PC_LIBNAME zamgenmx-6.1)
else()
  set(ZAMGEN_PC_LIBNAME zamgenmx)
endif()
foreach(dir LIBDIR INCLUDEDIR)
  if(IS_ABSOLUTE ${CMAKE_INSTALL_${dir}})
    set(ZAMGEN_PC_${dir} ${CMAKE_INSTALL_${dir}})
  else()
    set(ZAMGEN_PC_${dir} "\${prefix}/${CMAKE_INSTALL_${dir}}")
  endif()
endforeach()
set(ZAMGEN_PC_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
set(ZAMGEN_PC_PREFIX "@ZAMGEN_PC_PREFIX@")  # filled in at install time
foreach(pc zamgen zamcore)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/${pc}.pc.in ${PROJECT_BINARY_DIR}/pkgconfig/${pc}.pc.in @ONLY)
  install(CODE "
    set(ZAMGEN_PC_PREFIX \"\${CMAKE_INSTALL_PREFIX}\")
    configure_file(\"${PROJECT_BINARY_DIR}/pkgconfig/${pc}.pc.in\" \"${PROJECT_BINARY_DIR}/pkgconfig/${pc}.pc\" @ONLY)")
  install(FILES ${PROJECT_BINARY_DIR}/pkgconfig/${pc}.pc DESTINATION ${ZAMGEN_PC_DIR})
endforeach()

# The package: the installed tree in one archive in the binary directory,
# zamgen-<version>-win64.zip for Windows (the mingw build preset makes it),
# built by the target `package`.
if(PROJECT_IS_TOP_LEVEL)
  set(CPACK_PACKAGE_NAME zamgen)
  set(CPACK_PACKAGE_VENDOR zamgen)
  set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Fixed-size signal transforms with a C interface")
  if(WIN32)
    set(CPACK_GENERATOR ZIP)
    set(CPACK_PACKAGE_FILE_NAME zamgen-${PROJECT_VERSION}-win64)
  else()
    set(CPACK_GENERATOR TGZ)
    set(CPACK_PACKAGE_FILE_NAME zamgen-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR})
  endif()
  # A package can be unpacked anywhere: its .pc files name the prefix
  # relative to their own directory instead of cpack's staging directory.
  file(RELATIVE_PATH ZAMGEN_PC_UP /prefix/${ZAMGEN_PC_DIR} /prefix)
  string(REGEX REPLACE "/$" "" ZAMGEN_PC_UP "${ZAMGEN_PC_UP}")
  configure_file(${CMAKE_CURRENT_LIST_DIR}/RelocatePkgConfig.cmake.in
    ${PROJECT_BINARY_DIR}/RelocatePkgConfig.cmake @ONLY)
  set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_BINARY_DIR}/RelocatePkgConfig.cmake)
  include(CPack)
endif()
