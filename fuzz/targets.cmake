# The fuzz targets, for the fuzzer (fuzz/CMakeLists.txt) and for their replay in every test run (tests/faults.cmake).
#
# They are built from the program's own sources, with the system in memory in place of support/system.cpp and with
# growth steps of their own: NextCapacity is renamed where the program defines it, and memorysystem.cpp has another.
set(KIVOM_FUZZ_TARGETS run rows fields sort line exchange meshfile)
set(KIVOM_FUZZ_DIR ${CMAKE_CURRENT_LIST_DIR})
get_filename_component(KIVOM_ROOT ${CMAKE_CURRENT_LIST_DIR} DIRECTORY)

# kivom_fuzz_core(name): object library of the program and the system in memory.
function(kivom_fuzz_core name)
  get_target_property(sources kivom_core SOURCES)
  get_target_property(reader_sources kivom_meshfile SOURCES)
  list(APPEND sources ${reader_sources} tests/support/printmesh.cpp)
  list(TRANSFORM sources PREPEND ${KIVOM_ROOT}/)
  add_library(${name} OBJECT ${sources} ${KIVOM_FUZZ_DIR}/memorysystem.cpp
    ${KIVOM_FUZZ_DIR}/meshfile.cpp ${KIVOM_FUZZ_DIR}/plain.cpp
    ${KIVOM_FUZZ_DIR}/plainreader.cpp ${KIVOM_FUZZ_DIR}/plainresolve.cpp
    ${KIVOM_FUZZ_DIR}/plainmesh.cpp)
  target_include_directories(${name} PUBLIC ${KIVOM_ROOT})
  set_source_files_properties(${KIVOM_ROOT}/support/allocate.cpp
    PROPERTIES COMPILE_DEFINITIONS NextCapacity=NextCapacityOfTheProgram)
endfunction()
