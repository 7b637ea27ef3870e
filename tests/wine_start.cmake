# Starts the Wine server, staying up until a minute after the last program
# ends, and Wine's services, all with no pipe of ctest's: a service that a
# test program started would keep that test's output open, and the test
# running, until the server shut down.  A server left by an earlier run (or
# by the listing of the tests) is ended first: a second one would refuse to
# start.
foreach(command "wineserver;--kill" "wineserver;--wait")
  execute_process(COMMAND ${command} INPUT_FILE /dev/null OUTPUT_FILE /dev/null ERROR_FILE /dev/null)
endforeach()
foreach(command "wineserver;-p60" "wine;cmd;/c;exit")
  execute_process(COMMAND ${command} RESULT_VARIABLE rc
                  INPUT_FILE /dev/null OUTPUT_FILE /dev/null ERROR_FILE /dev/null)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "${command} failed (${rc})")
  endif()
endforeach()
