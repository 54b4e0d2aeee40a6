#pragma once

#include <stdexcept>

namespace image_adapter {

/// Why a call of the adapter fails. `what()` is the text for the parent, UTF-8.
class Failure : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

} // namespace image_adapter
