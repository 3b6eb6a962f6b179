# Checks written in Python. Each exits with 77 where something it needs is not there, and then counts as skipped.

function(kivom_python_test name script)
  add_test(NAME ${name} COMMAND ${KIVOM_PYTHON} ${CMAKE_SOURCE_DIR}/${script} ${ARGN})
  set_tests_properties(${name} PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 600)
endfunction()

# Real decks.
if(TARGET kivodeck)
  set(kivodeck --kivodeck $<TARGET_FILE:kivodeck>)
endif()
kivom_python_test(decks tests/decks/run_decks.py --program $<TARGET_FILE:KIVOm> ${kivodeck} ${CMAKE_SOURCE_DIR}/examples)

# What other programs find in plain decks.
if(TARGET kivodeck)
  kivom_python_test(second_opinions tests/decks/second_opinions.py ${kivodeck})
endif()

# Files read back with the VTK library and with meshio.
kivom_python_test(vtk tests/vtk/run_vtk_checks.py --program $<TARGET_FILE:KIVOm>
                  --examples ${CMAKE_SOURCE_DIR}/examples --cases ${CMAKE_SOURCE_DIR}/tests/cases
                  --work ${CMAKE_CURRENT_BINARY_DIR}/vtk)

# Measures of shape, held against the VTK library's.
kivom_python_test(quality tests/vtk/run_quality.py $<TARGET_FILE:qualityvalues>)

# The texts that the mutations replace stand where the list says.
kivom_python_test(mutations.list tools/mutate --list)

# What a build with sanitizers or counters cannot tell anything new about: the checks themselves, and speed (the
# outputs of a small benchmark are right, and the number of instructions is the committed one).
if(NOT KIVOM_SANITIZE AND NOT KIVOM_COVERAGE)
  kivom_python_test(vtk_checks_themselves tests/vtk/test_check_vtk.py)
  kivom_python_test(vtk_runs_themselves tests/vtk/test_run_vtk_checks.py)
  kivom_python_test(benchmark_samples bench/test_samples.py)
  if(KIVOM_BENCHMARKS)
    set(plain --plain $<TARGET_FILE:KIVOm_plain>)
  endif()
  kivom_python_test(benchmark bench/compare.py --quick --no-peers --program $<TARGET_FILE:KIVOm>
                    --maker $<TARGET_FILE:makedeck> ${plain} ${kivodeck})
  kivom_python_test(instructions bench/instructions.py --program $<TARGET_FILE:KIVOm> --maker $<TARGET_FILE:makedeck>)
endif()
