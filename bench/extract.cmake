find_package(ICU REQUIRED COMPONENTS uc)

add_executable(extract_bench article_bench.cpp extract_bench.cpp product_bench.cpp)
target_link_libraries(extract_bench PRIVATE kelb_extract benchmark::benchmark_main ICU::uc kelb_warnings)

add_executable(template_bench template_bench.cpp)
target_link_libraries(template_bench PRIVATE kelb_extract benchmark::benchmark_main kelb_warnings)
