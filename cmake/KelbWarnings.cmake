# One interface target carries warnings and sanitizers to every target of ours, and to nothing of others.
add_library(kelb_warnings INTERFACE)
target_compile_options(kelb_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Woverloaded-virtual
    -Wold-style-cast -Wcast-align $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond -Wlogical-op> -Wimplicit-fallthrough
    # GCC 12's flow analysis raises false alarms inside the standard library's own templates (its bugs 105651, 105329,
    # 98465). The sanitizers of the dev preset watch for what these would say.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict -Wno-array-bounds -Wno-stringop-overflow -Wno-stringop-overread
        -Wno-maybe-uninitialized>
    $<$<BOOL:${KELB_WERROR}>:-Werror>)
if(KELB_SANITIZE)
    target_compile_options(kelb_warnings INTERFACE
        -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(kelb_warnings INTERFACE -fsanitize=address,undefined)
endif()
if(KELB_FUZZ)
    # Each comparison is recorded, so checks that the address sanitizer makes anyway would cost half of the speed.
    target_compile_options(kelb_warnings INTERFACE
        -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize=null,alignment,vptr,object-size
        -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(kelb_warnings INTERFACE -fsanitize=address,undefined)
endif()
