# Checks written in Python. Where a library or a program that one needs is not there, it is not among the tests.

# kivom_python_test(name script [NEEDS modules and programs...] [UNDER command...] [ARGS arguments...])
function(kivom_python_test name script)
  cmake_parse_arguments(ARG "" "" "NEEDS;UNDER;ARGS" ${ARGN})
  execute_process(RESULT_VARIABLE missing COMMAND ${KIVOM_PYTHON} -c [[
import importlib.util, shutil, sys
sys.exit(not all(importlib.util.find_spec(need) or shutil.which(need) for need in sys.argv[1:]))]] ${ARG_NEEDS})
  if(missing)
    message(STATUS "Not tested: ${name}, which needs ${ARG_NEEDS}")
    return()
  endif()
  add_test(NAME ${name} COMMAND ${ARG_UNDER} ${KIVOM_PYTHON} ${CMAKE_SOURCE_DIR}/${script} ${ARG_ARGS})
  set_tests_properties(${name} PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 600)
endfunction()

# Real decks.
if(TARGET kivodeck)
  set(kivodeck --kivodeck $<TARGET_FILE:kivodeck>)
endif()
set(KIVOM_DECKS "" CACHE PATH "Folder of more decks that the tests translate, those of real exporters for instance")
kivom_python_test(decks tests/decks/run_decks.py ARGS --program $<TARGET_FILE:KIVOm> ${kivodeck}
                  ${CMAKE_SOURCE_DIR}/examples ${KIVOM_DECKS})

# What other programs find in plain decks.
if(TARGET kivodeck)
  kivom_python_test(second_opinions tests/decks/second_opinions.py NEEDS vtkmodules ARGS ${kivodeck})
endif()

# Files read back with the VTK library and with meshio.
kivom_python_test(vtk tests/vtk/run_vtk_checks.py NEEDS vtkmodules meshio gmsh ARGS --program $<TARGET_FILE:KIVOm>
                  --examples ${CMAKE_SOURCE_DIR}/examples --cases ${CMAKE_SOURCE_DIR}/tests/cases
                  --work ${CMAKE_CURRENT_BINARY_DIR}/vtk)

# Measures of shape, held against the VTK library's.
kivom_python_test(quality tests/vtk/run_quality.py NEEDS vtkmodules ARGS $<TARGET_FILE:qualityvalues>)

# The texts that the mutations replace stand where the list says.
kivom_python_test(mutations.list tools/mutate ARGS --list)

# What a build with sanitizers or counters cannot tell anything new about: the checks themselves, speed (the outputs of a
# small benchmark are right, and the number of instructions is the committed one), and pictures.
if(NOT KIVOM_SANITIZE AND NOT KIVOM_COVERAGE)
  kivom_python_test(vtk_checks_themselves tests/vtk/test_check_vtk.py NEEDS vtkmodules meshio)
  kivom_python_test(vtk_runs_themselves tests/vtk/test_run_vtk_checks.py NEEDS vtkmodules meshio)
  kivom_python_test(benchmark_samples bench/test_samples.py)
  if(KIVOM_BENCHMARKS)
    set(plain --plain $<TARGET_FILE:KIVOm_plain>)
  endif()
  kivom_python_test(benchmark bench/compare.py ARGS --quick --no-peers --program $<TARGET_FILE:KIVOm>
                    --maker $<TARGET_FILE:makedeck> ${plain} ${kivodeck})
  kivom_python_test(instructions bench/instructions.py NEEDS valgrind ARGS --program $<TARGET_FILE:KIVOm>
                    --maker $<TARGET_FILE:makedeck>)
  kivom_python_test(view tests/view/test_kivorender.py NEEDS numpy vtkmodules xvfb-run UNDER xvfb-run -a
                    ARGS --program $<TARGET_FILE:KIVOm> ${kivodeck})
endif()
