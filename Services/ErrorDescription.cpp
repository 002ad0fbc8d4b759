#include "Services/ErrorDescription.h"

#include <new>
#include <system_error>

namespace mossbit {

std::string description(const std::exception& error) {
    if (const auto* systemError = dynamic_cast<const std::system_error*>(&error))
        return systemError->code().message();
    if (dynamic_cast<const std::bad_alloc*>(&error))
        return std::make_error_code(std::errc::not_enough_memory).message();
    return error.what();
}

} // namespace mossbit
