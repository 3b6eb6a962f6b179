# The fuzz targets, for the fuzzer (fuzz/CMakeLists.txt) and for their replay in every test run (tests/faults.cmake):
# target "run" is run_fuzz.cpp with the inputs in seeds/run and found/run, and so on.
file(GLOB KIVOM_FUZZ_TARGETS CONFIGURE_DEPENDS RELATIVE ${CMAKE_CURRENT_LIST_DIR} ${CMAKE_CURRENT_LIST_DIR}/*_fuzz.cpp)
list(TRANSFORM KIVOM_FUZZ_TARGETS REPLACE "_fuzz\\.cpp$" "")

# The account of a deck reads real files and has the system's own services; the others have a fake system. The verb
# flatten's own file is part of its target: the program that holds it has a main of its own.
function(kivom_link_fuzz program target)
  if(target STREQUAL checkdeck)
    target_link_libraries(${program} PRIVATE kivom_account kivom_system)
  elseif(target STREQUAL flattendeck)
    target_sources(${program} PRIVATE ${PROJECT_SOURCE_DIR}/kivodeck/flat.cpp)
    target_link_libraries(${program} PRIVATE kivom_account kivom_flatten kivom_fakesystem)
  elseif(target STREQUAL audit)
    target_link_libraries(${program} PRIVATE kivom_audit)
  else()
    target_link_libraries(${program} PRIVATE kivom_fakesystem)
  endif()
endfunction()

# Decks that serve them, too.
set(KIVOM_FUZZ_SEEDS_checkdeck fuzz/seeds/run examples tests/findings tests/findings/decks)
set(KIVOM_FUZZ_SEEDS_flattendeck fuzz/seeds/checkdeck examples tests/findings tests/findings/decks)
list(TRANSFORM KIVOM_FUZZ_SEEDS_checkdeck PREPEND ${PROJECT_SOURCE_DIR}/)
list(TRANSFORM KIVOM_FUZZ_SEEDS_flattendeck PREPEND ${PROJECT_SOURCE_DIR}/)
