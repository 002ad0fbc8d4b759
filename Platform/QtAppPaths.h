#pragma once

#include "Platform/AppPaths.h"

namespace mossbit {

/// The folders that the desktop's conventions name.
class QtAppPaths final : public AppPaths {
public:
    std::filesystem::path applicationSupportFolder() const override;
};

} // namespace mossbit
