#pragma once

#include "Platform/MainLoop.h"

namespace mossbit {

/// The event loop of the running `QCoreApplication`, on its thread.
class QtMainLoop final : public MainLoop {
public:
    std::unique_ptr<Task> after(std::chrono::milliseconds delay,
                                std::function<void()> action) override;
};

} // namespace mossbit
