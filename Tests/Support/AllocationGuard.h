#pragma once

namespace mossbit {

/// While it lives, the thread that made it ends the program when it allocates or frees memory.
/// Sanitizers bring allocators of their own; with them it does nothing.
class AllocationGuard {
public:
    AllocationGuard() noexcept;
    ~AllocationGuard();
    AllocationGuard(const AllocationGuard&) = delete;
    AllocationGuard& operator=(const AllocationGuard&) = delete;
};

} // namespace mossbit
