#pragma once

namespace kelb::platform {

/// What long operations call so that whoever runs them stays responsive.
class UiPump {
public:
    virtual ~UiPump() = default;
    virtual void yield() = 0;
};

} // namespace kelb::platform
