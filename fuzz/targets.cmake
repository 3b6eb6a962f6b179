# The fuzz targets, for the fuzzer (fuzz/CMakeLists.txt) and for their replay in every test run (tests/faults.cmake):
# target "run" is run_fuzz.cpp with the inputs in seeds/run and found/run, and so on.
file(GLOB KIVOM_FUZZ_TARGETS CONFIGURE_DEPENDS RELATIVE ${CMAKE_CURRENT_LIST_DIR} ${CMAKE_CURRENT_LIST_DIR}/*_fuzz.cpp)
list(TRANSFORM KIVOM_FUZZ_TARGETS REPLACE "_fuzz\\.cpp$" "")
