# What the shells offer is what the programs' help tells: in each shell that is here.
set(helpful ${PROJECT_SOURCE_DIR}/view/kivorender)
if(TARGET kivodeck)
  list(APPEND helpful $<TARGET_FILE:kivodeck>)
endif()
foreach(shell bash fish zsh)
  find_program(KIVOM_${shell} ${shell} DOC "Shell whose completions are tested")
  if(KIVOM_${shell} AND KIVOM_PYTHON AND helpful)
    add_test(NAME completions.${shell} COMMAND ${KIVOM_PYTHON} ${CMAKE_CURRENT_LIST_DIR}/completions/run_completions.py
      ${shell} ${PROJECT_SOURCE_DIR}/completions ${helpful})
  endif()
endforeach()
