# `kelb call` as a library of its own, so that its tests need nothing of the jobs.
find_package(nlohmann_json REQUIRED)
kelb_library(kelb_call
    SOURCES
        call_arguments.cpp
        call_article_operations.cpp
        call_extract_operations.cpp
        call_loop.cpp
        call_objects.cpp
        call_operations.cpp
        call_rewrite_operations.cpp
        call_segment_operations.cpp
        call_settings_operations.cpp
        call_site_operations.cpp
        call_template_operations.cpp
        file_streams.cpp
    LINKS
        kelb_extract
        kelb_rewrite
        kelb_rwini
        kelb_segment
        kelb_platform
        nlohmann_json::nlohmann_json)
