# One interface target carries warnings and sanitizers to every target of ours, and to nothing of others.
add_library(kelb_warnings INTERFACE)
target_compile_options(kelb_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Woverloaded-virtual
    -Wold-style-cast -Wcast-align -Wduplicated-cond -Wlogical-op -Wimplicit-fallthrough
    # GCC 12's flow analysis raises false alarms inside the standard library's own templates (its bugs 105651, 105329,
    # 98465). The sanitizers of the dev preset watch for what these would say.
    -Wno-restrict -Wno-array-bounds -Wno-stringop-overflow -Wno-stringop-overread -Wno-maybe-uninitialized
    $<$<BOOL:${KELB_WERROR}>:-Werror>)
if(KELB_SANITIZE)
    target_compile_options(kelb_warnings INTERFACE
        -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(kelb_warnings INTERFACE -fsanitize=address,undefined)
endif()
