# One interface target carries warnings and sanitizers to every target of ours, and to nothing of others.
add_library(kelb_warnings INTERFACE)
target_compile_options(kelb_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Woverloaded-virtual
    -Wold-style-cast -Wcast-align -Wnull-dereference -Wduplicated-cond -Wlogical-op -Wimplicit-fallthrough
    # GCC 12 sees overlaps in std::string's own insert and assign that cannot happen (its bug 105651).
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>
    $<$<BOOL:${KELB_WERROR}>:-Werror>)
if(KELB_SANITIZE)
    # GCC's flow analysis raises false alarms in instrumented code.
    target_compile_options(kelb_warnings INTERFACE
        -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer
        -Wno-null-dereference -Wno-maybe-uninitialized)
    target_link_options(kelb_warnings INTERFACE -fsanitize=address,undefined)
endif()
