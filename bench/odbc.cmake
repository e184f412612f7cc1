add_executable(odbc_bench odbc_bench.cpp)
target_link_libraries(odbc_bench PRIVATE kelb_ado kelb_warnings)
