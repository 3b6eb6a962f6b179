# The fuzz targets, for the fuzzer (fuzz/CMakeLists.txt) and for their replay in every test run (tests/faults.cmake).
set(KIVOM_FUZZ_TARGETS run rows fields sort line exchange)
