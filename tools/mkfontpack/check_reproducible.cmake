# Runs the generator twice and compares both outputs with the committed pack.
foreach(run 1 2)
  execute_process(COMMAND ${TOOL} ${FONT} ${OUT}/run${run}.pack RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "mkfontpack failed (${rc})")
  endif()
endforeach()
foreach(run 1 2)
  execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${OUT}/run${run}.pack ${PACK}
                  RESULT_VARIABLE differs)
  if(differs)
    message(FATAL_ERROR "run ${run} of mkfontpack differs from ${PACK}")
  endif()
endforeach()
