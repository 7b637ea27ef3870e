# Runs the codelet compiler into a scratch directory and requires every file
# to equal the one the build generated.
file(REMOVE_RECURSE ${SCRATCH})
file(MAKE_DIRECTORY ${SCRATCH})
execute_process(COMMAND ${CODEGEN} ${SCRATCH} ${SHARDS} ${CHECKED} RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "codelet compiler failed: ${rc}")
endif()
file(GLOB_RECURSE files RELATIVE ${REFERENCE} ${REFERENCE}/*.cpp ${REFERENCE}/*.tsv ${REFERENCE}/*.inc
     ${REFERENCE}/*.h ${REFERENCE}/*.hpp ${REFERENCE}/*.def ${REFERENCE}/*.map ${REFERENCE}/*.txt)
list(LENGTH files count)
if(count EQUAL 0)
  message(FATAL_ERROR "no generated files in ${REFERENCE}")
endif()
foreach(f IN LISTS files)
  execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${REFERENCE}/${f} ${SCRATCH}/${f}
                  RESULT_VARIABLE diff)
  if(NOT diff EQUAL 0)
    message(FATAL_ERROR "${f} differs between two runs of the codelet compiler")
  endif()
endforeach()
message(STATUS "${count} generated files identical")
