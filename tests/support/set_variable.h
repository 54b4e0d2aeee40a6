#pragma once

#include <cstdlib>
#include <stdexcept>
#include <string>

namespace kessil::test {

/// Sets a variable of this process's environment, which its libraries see, and the children that it starts from now
/// on. On Windows an empty value takes the variable away.
inline void SetVariable(const std::string &name, const std::string &value)
{
#ifdef _WIN32
    const bool done = _putenv_s(name.c_str(), value.c_str()) == 0;
#else
    const bool done = setenv(name.c_str(), value.c_str(), 1) == 0;
#endif
    if (!done)
        throw std::runtime_error("the variable " + name + " can't be set");
}

} // namespace kessil::test
