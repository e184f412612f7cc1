#pragma once

#ifdef _WIN32
#include "platform/windows_headers.h"
#endif

namespace kelb::platform {

/// Where Wine stands in for Windows and does a thing otherwise, as the place that asks says.
inline bool underWine() {
#ifdef _WIN32
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
#else
    return false;
#endif
}

} // namespace kelb::platform
