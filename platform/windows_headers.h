#pragma once

/// The one door to <windows.h>, which other headers of the system expect ahead of them: without the macros that would
/// take names of ours, and with what Windows 10 has.
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef NOGDI
#define NOGDI
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>
