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
  # kivom_hostile(name program more...): alone, because it holds times against each other. No bound on time or memory
  # holds for a build with sanitizers or counters: what it reports shows on less, beside others.
  function(kivom_hostile name program)
    set(alone ON)
    if(KIVOM_SANITIZE OR KIVOM_COVERAGE)
      list(APPEND ARGN --size 40000)
      set(alone OFF)
    endif()
    add_test(NAME ${name} COMMAND ${KIVOM_PYTHON} ${CMAKE_CURRENT_SOURCE_DIR}/hostile/hostile.py
      --program $<TARGET_FILE:${program}> --work ${CMAKE_CURRENT_BINARY_DIR}/${name}-work ${ARGN})
    set_tests_properties(${name} PROPERTIES TIMEOUT 600 RUN_SERIAL ${alone} LABELS slow)
  endfunction()
  kivom_hostile(hostile KIVOm)
  if(TARGET kivodeck)
    foreach(part 1 2 3 4) # together they take more than a minute
      kivom_hostile(hostile.check.${part} kivodeck --check --part ${part}/4)
    endforeach()
  endif()
endif()
