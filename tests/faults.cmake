# Hostile decks, faults from outside, shortage of memory, and the replay of what the fuzz targets have found.
include(${PROJECT_SOURCE_DIR}/fuzz/targets.cmake)

# replay_run, replay_rows, ...: each target over its seeds and finds and some inputs made at random, with whatever compiler is at hand.
foreach(target ${KIVOM_FUZZ_TARGETS})
  add_executable(replay_${target} ${PROJECT_SOURCE_DIR}/fuzz/${target}_fuzz.cpp ${PROJECT_SOURCE_DIR}/fuzz/replay_main.cpp)
  kivom_link_fuzz(replay_${target} ${target})
  add_test(NAME replay.${target}
    COMMAND replay_${target} ${PROJECT_SOURCE_DIR}/fuzz/seeds/${target} ${PROJECT_SOURCE_DIR}/fuzz/found/${target}
            ${KIVOM_FUZZ_SEEDS_${target}} --random 1500)
endforeach()

add_executable(alloc_test ${CMAKE_CURRENT_LIST_DIR}/faults/alloc_test.cpp)
target_link_libraries(alloc_test PRIVATE kivom_fakesystem)
add_test(NAME faults.memory COMMAND alloc_test)

if(KIVOM_PYTHON)
  add_test(NAME faults.outside COMMAND ${KIVOM_PYTHON} ${CMAKE_CURRENT_LIST_DIR}/faults/faults.py
    --program $<TARGET_FILE:KIVOm> --work ${CMAKE_CURRENT_BINARY_DIR}/faults-work)
  if(KIVOM_SANITIZE OR KIVOM_COVERAGE)
    set(hostile_size --size 40000) # no bound on time or memory holds for such a build; what it reports shows on less
  endif()
  add_test(NAME hostile COMMAND ${KIVOM_PYTHON} ${CMAKE_CURRENT_LIST_DIR}/hostile/hostile.py
    --program $<TARGET_FILE:KIVOm> --work ${CMAKE_CURRENT_BINARY_DIR}/hostile-work ${hostile_size})
  set_tests_properties(hostile PROPERTIES TIMEOUT 600 RUN_SERIAL ON)
  if(TARGET kivodeck)
    add_test(NAME hostile.check COMMAND ${KIVOM_PYTHON} ${CMAKE_CURRENT_LIST_DIR}/hostile/hostile.py --check
      --program $<TARGET_FILE:kivodeck> --work ${CMAKE_CURRENT_BINARY_DIR}/hostile-check-work ${hostile_size})
    set_tests_properties(hostile.check PROPERTIES TIMEOUT 600 RUN_SERIAL ON)
  endif()
endif()
